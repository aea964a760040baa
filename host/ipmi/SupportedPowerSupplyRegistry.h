// The registry of supported power supplies.
#pragma once

#include "host/ipmi/SupportedPowerSupplyDescriptorBase.h"
#include "host/kex/reference/HashMap.h"

namespace Ipmi {

/// The singleton that holds the descriptors by name. Its walk goes in the order of the names'
/// hashes; supplements come behind all others, so that none takes their supplies.
class KEX_API SupportedPowerSupplyRegistry final : public Kex::Entity {
 public:
  using Descriptors = Kex::HashMap<SupportedPowerSupplyDescriptorBase>;

  /// A walk over the descriptors; when it ends, the registry knows how far it has come.
  class Walk {
   public:
    explicit Walk(SupportedPowerSupplyRegistry& registry)
        : registry_(&registry),
          descriptor_(registry.descriptors_),
          supplement_(registry.supplements_) {}
    Walk(Walk const&) = delete;
    Walk& operator=(Walk const&) = delete;
    ~Walk() { registry_->reached_ = **this; }

    explicit operator bool() const { return static_cast<bool>(place()); }
    Kex::Ptr<SupportedPowerSupplyDescriptorBase> operator*() const { return *place(); }
    SupportedPowerSupplyDescriptorBase* operator->() const { return place().operator->(); }
    /// Goes on to the next one; at the end it stays there.
    Walk& operator++() {
      ++(descriptor_ ? descriptor_ : supplement_);
      return *this;
    }

   private:
    Descriptors::Iterator const& place() const { return descriptor_ ? descriptor_ : supplement_; }

    Kex::Ptr<SupportedPowerSupplyRegistry> registry_;
    Descriptors::Iterator descriptor_;
    Descriptors::Iterator supplement_;
  };

  static Kex::KexType& _fwkType();

  explicit SupportedPowerSupplyRegistry(Kex::Name name) : Entity(std::move(name)) {}
  Kex::KexType& fwkType() const override;
  ~SupportedPowerSupplyRegistry() override;

  Kex::Ptr<PtrInterface> member(Kex::Name const& name) const override;
  std::vector<Kex::Name> memberNames() const override;
  Kex::Ptr<Entity> memberDel(Kex::Name const& name) override {
    return powerSupplyDescriptorDel(name);
  }

  /// Those that are no supplements.
  Descriptors const& powerSupplyDescriptors() const { return descriptors_; }
  Descriptors const& supplements() const { return supplements_; }
  /// A walk that stands on the first descriptor.
  Walk powerSupplyDescriptorIterator() { return Walk(*this); }
  /// The descriptor that the last walk was left at, told once; null for one that came to the end.
  Kex::Ptr<SupportedPowerSupplyDescriptorBase> reachedDescriptorDel() {
    return std::exchange(reached_, {});
  }
  /// Takes `descriptor` in, in place of one of the same name.
  void powerSupplyDescriptorIs(Kex::Ptr<SupportedPowerSupplyDescriptorBase> const& descriptor);
  /// The same as a supplement.
  void supplementIs(Kex::Ptr<SupportedPowerSupplyDescriptorBase> const& descriptor);
  /// Lets the descriptor go; null if there was none.
  Kex::Ptr<SupportedPowerSupplyDescriptorBase> powerSupplyDescriptorDel(Kex::Name const& name);

 private:
  void take(Descriptors& place, Kex::Ptr<SupportedPowerSupplyDescriptorBase> const& descriptor);

  Descriptors descriptors_;
  Descriptors supplements_;
  Kex::Ptr<SupportedPowerSupplyDescriptorBase> reached_;
};

}  // namespace Ipmi
