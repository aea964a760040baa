// Kex::FileDescriptor, a file descriptor as the value of an attribute.
#pragma once

#include "host/kex/entity/Entity.h"

namespace Kex {

/// Names a descriptor that somebody else opened and closes.
class KEX_API FileDescriptor : public Entity {
 public:
  static KexType& _fwkType();

  /// `fd` stays the property of who opened it.
  FileDescriptor(Name name, int fd) : Entity(std::move(name)), fd_(fd) {}
  KexType& fwkType() const override;
  ~FileDescriptor() override;

  /// Open as long as its owner keeps it so.
  int fd() const { return fd_; }

 private:
  int fd_;
};

}  // namespace Kex
