// The table of accepted PMBus manufacturer identities.
#pragma once

#include <utility>

#include "host/kex/notify/PtrInterface.h"
#include "host/kex/reference/HashMap.h"

namespace Emerson::PmbusIdentifier {

/// An MFR_ID text, and whether it is accepted.
class KexMfrIdSupported final : public Kex::PtrInterface {
 public:
  KexMfrIdSupported(Kex::String8 key, bool value) : key_(std::move(key)), value_(value) {}

  Kex::String8 const& key() const { return key_; }
  bool value() const { return value_; }
  void valueIs(bool value) { value_ = value; }

 private:
  Kex::String8 key_;
  bool value_;
};

using MfrIdTable = Kex::HashMap<KexMfrIdSupported>;

}  // namespace Emerson::PmbusIdentifier
