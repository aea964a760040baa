// A bus that did not do what it was asked to.
#pragma once

#include <string>

#include "agent/base/Error.h"
#include "host/smbus/ErrorKind.h"

namespace Agent {

/// A `Failure` of a bus, with its kind.
class BusFailure : public Failure {
 public:
  BusFailure(Smbus::ErrorKind kind, std::string const& text) : Failure(text), kind_(kind) {}
  Smbus::ErrorKind kind() const { return kind_; }

 private:
  Smbus::ErrorKind kind_;
};

}  // namespace Agent
