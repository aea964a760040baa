// Trouble that lasts, told of once.
#pragma once

#include <string>
#include <utility>

#include "agent/base/Ledger.h"

namespace Agent {

/// Work that is done again and again: that it fails is told of when that begins or its cause
/// changes, and that it succeeds again when it had failed.
class Trouble {
 public:
  /// `what` is the thing that is to be as it should; `ledger` must outlive this.
  Trouble(std::string what, Ledger& ledger) : what_(std::move(what)), ledger_(ledger) {}

  /// Does `work`. Whether no `Failure` was thrown.
  template <class Work>
  bool attempt(Work work) {
    try {
      work();
      if (!std::exchange(cause_, "").empty()) {
        complain(what_ + ": as it should be again", Priority::info);
      }
      return true;
    } catch (Failure const& failure) {
      if (std::exchange(cause_, failure.what()) != failure.what()) {
        ledger_.tell(Status::failed, failure.what());
      }
      return false;
    }
  }

 private:
  std::string what_;
  Ledger& ledger_;
  /// What was told last; empty while all is well.
  std::string cause_;
};

}  // namespace Agent
