// Who is told what a recording is made of.
#pragma once

#include "agent/recording/RecordedSlot.h"

namespace Agent {

/// Is told what a recording of one slot is made of, in the order of the times.
class RecordingSink {
 public:
  virtual void transactionIs(RecordedTransaction const& transaction) = 0;
  /// A line of another event.
  virtual void lineIs(std::string const& line) = 0;

 protected:
  RecordingSink() = default;
  RecordingSink(RecordingSink const&) = default;
  RecordingSink& operator=(RecordingSink const&) = default;
  ~RecordingSink() = default;
};

}  // namespace Agent
