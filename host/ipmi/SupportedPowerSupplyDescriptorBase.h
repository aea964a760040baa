// Base of the descriptors of supported power supplies.
#pragma once

#include "host/ipmi/IdpromContents.h"
#include "host/kex/entity/Entity.h"

namespace Ipmi {

/// Stands for one supported kind of supply: handed the parsed FRU data of a supply, it tells
/// whether the supply is of its kind, and the FDL if it is.
class KEX_API SupportedPowerSupplyDescriptorBase : public Kex::Entity {
 public:
  class NotifieeConst;
  class Notifiee;

  static Kex::KexType& _fwkType();

  explicit SupportedPowerSupplyDescriptorBase(Kex::Name name) : Entity(std::move(name)) {}
  Kex::KexType& fwkType() const override;
  ~SupportedPowerSupplyDescriptorBase() override;

  /// Examines `idpromContents`, whose product info must be set, and sets `managed` and `fdl`.
  virtual void doGenerateFdl(Kex::Ptr<IdpromContents> const& idpromContents) = 0;
  virtual void managedIs(bool managed);
  virtual void fdlIs(Kex::String8 fdl);

  /// Whether the supply examined last is of this kind.
  bool managed() const { return managed_; }
  /// The FDL of the supply examined last; empty when it is not managed.
  Kex::String8 const& fdl() const { return fdl_; }
  /// The key in the registry.
  Kex::String8 const& key() const { return name().str(); }

 protected:
  /// Attributes that notifiees react to.
  enum Reaction : unsigned { kOnManaged = kReactionsEnd, kOnFdl };

 private:
  bool managed_ = false;
  Kex::String8 fdl_;
};

/// Reacts to changes of a descriptor.
class KEX_API SupportedPowerSupplyDescriptorBase::NotifieeConst
    : public Kex::NotifieeConstOf<SupportedPowerSupplyDescriptorBase, Kex::Entity::NotifieeConst> {
 public:
  using NotifieeConstOf::NotifieeConstOf;

 protected:
  virtual void onManaged() {}
  virtual void onFdl() {}
  void react(unsigned reaction) override;
};

/// The same, for reactors that change what they observe.
class KEX_API SupportedPowerSupplyDescriptorBase::Notifiee
    : public Kex::NotifieeOf<SupportedPowerSupplyDescriptorBase,
                             SupportedPowerSupplyDescriptorBase::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
};

}  // namespace Ipmi
