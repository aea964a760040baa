// PowerSupplyDetector::SlotDriver, what holds and drives the identifiers of a slot.
#pragma once

#include <map>

#include "host/detector/IdentifierBase.h"

namespace PowerSupplyDetector {

/// Drives the identifiers of one slot.
class KEX_API SlotDriver final : public Kex::Entity {
 public:
  static Kex::KexType& _fwkType();

  explicit SlotDriver(Kex::Name name) : Entity(std::move(name)) {}
  Kex::KexType& fwkType() const override;
  ~SlotDriver() override;

  Kex::Ptr<PtrInterface> member(Kex::Name const& name) const override;
  std::vector<Kex::Name> memberNames() const override;

  /// The identifier of this name; null if there is none.
  Kex::Ptr<IdentifierBase> identifier(Kex::String8 const& name) const;
  /// Attaches `identifier` under `name` and starts its detection. One that had the name before is
  /// switched off, its requests are withdrawn, and it is let go.
  void identifierIs(Kex::String8 const& name, Kex::Ptr<IdentifierBase> const& identifier);
  /// Lets the identifier go, switched off; null if there was none.
  Kex::Ptr<IdentifierBase> identifierDel(Kex::String8 const& name);

 private:
  std::map<Kex::String8, Kex::Ptr<IdentifierBase>> identifiers_;
};

}  // namespace PowerSupplyDetector
