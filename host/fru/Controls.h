// Presence lines of a slot: an interrupt controller and a general-purpose output.
#pragma once

#include "host/kex/entity/Entity.h"

namespace Fru {

/// Controls the interrupt that tells of a supply's presence.
class KEX_API IntCtrl final : public Kex::Entity {
 public:
  static Kex::KexType& _fwkType();

  using Entity::Entity;
  Kex::KexType& fwkType() const override;
  ~IntCtrl() override;
};

/// A line that can be driven.
class KEX_API Gpo final : public Kex::Entity {
 public:
  static Kex::KexType& _fwkType();

  using Entity::Entity;
  Kex::KexType& fwkType() const override;
  ~Gpo() override;
};

}  // namespace Fru
