// The registry of supported power supplies.
#pragma once

#include "host/ipmi/SupportedPowerSupplyDescriptorBase.h"
#include "host/kex/reference/HashMap.h"

namespace Ipmi {

/// The singleton that holds the descriptors by name. Its walk goes in the order of the names'
/// hashes.
class KEX_API SupportedPowerSupplyRegistry final : public Kex::Entity {
 public:
  using Descriptors = Kex::HashMap<SupportedPowerSupplyDescriptorBase>;

  static Kex::KexType& _fwkType();

  explicit SupportedPowerSupplyRegistry(Kex::Name name) : Entity(std::move(name)) {}
  Kex::KexType& fwkType() const override;
  ~SupportedPowerSupplyRegistry() override;

  Kex::Ptr<PtrInterface> member(Kex::Name const& name) const override;
  std::vector<Kex::Name> memberNames() const override;
  Kex::Ptr<Entity> memberDel(Kex::Name const& name) override {
    return powerSupplyDescriptorDel(name);
  }

  Descriptors const& powerSupplyDescriptors() const { return descriptors_; }
  Descriptors::Iterator powerSupplyDescriptorIterator() const { return descriptors_.begin(); }
  /// Takes `descriptor` in, in place of one of the same name.
  void powerSupplyDescriptorIs(Kex::Ptr<SupportedPowerSupplyDescriptorBase> const& descriptor);
  /// Lets the descriptor go; null if there was none.
  Kex::Ptr<SupportedPowerSupplyDescriptorBase> powerSupplyDescriptorDel(Kex::Name const& name);

 private:
  Descriptors descriptors_;
};

}  // namespace Ipmi
