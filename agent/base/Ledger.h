// What went wrong in a run.
#pragma once

#include <string>

#include "agent/base/Error.h"
#include "agent/base/ExitStatus.h"

namespace Agent {

/// Tells a person of what goes wrong, when it does, and keeps the worst status of all.
class Ledger {
 public:
  /// The worst status that was added; `ok` before the first.
  Status status() const { return status_; }
  /// A piece of work ended with `status`.
  void add(Status status) { status_ = worse(status_, status); }
  /// A piece of work ended with `status`, and `text` says why.
  void tell(Status status, std::string const& text) {
    complain(text);
    add(status);
  }
  /// Does `work`; a `Failure` that it throws is told of and added. Whether there was none.
  template <class Work>
  bool attempt(Work work) {
    try {
      work();
      return true;
    } catch (Failure const& failure) {
      tell(Status::failed, failure.what());
      return false;
    }
  }

 private:
  Status status_ = Status::ok;
};

}  // namespace Agent
