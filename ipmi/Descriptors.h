// The descriptor classes, one a supported model and airflow direction, and their factories.
#pragma once

#include <utility>

#include "host/ipmi/IdpromContents.h"
#include "host/ipmi/SupportedPowerSupplyDescriptorBase.h"
#include "host/kex/base/Export.h"
#include "host/kex/base/Name.h"
#include "host/kex/entity/Entity.h"
#include "host/kex/notify/Notifiee.h"
#include "host/kex/reference/Ptr.h"
#include "ipmi/Generate.h"
#include "ipmi/Models.h"
#include "ipmi/model/DescriptorTypes.h"

namespace Emerson::IpmiIdentifier {

/// What all descriptor types share: everything but their name and their row. A descriptor keeps
/// nothing between calls but the base's `managed` and `fdl`.
template <class Type, ModelId kModel>
class Descriptor : public Ipmi::SupportedPowerSupplyDescriptorBase {
 public:
  /// Reactors on descriptors of this type; constructing one on a descriptor attaches it.
  using NotifieeConst =
      Kex::NotifieeConstOf<Type, Ipmi::SupportedPowerSupplyDescriptorBase::NotifieeConst>;
  using Notifiee = Kex::NotifieeOf<Type, NotifieeConst>;

  explicit Descriptor(Kex::Name name) : Ipmi::SupportedPowerSupplyDescriptorBase(std::move(name)) {}

  Kex::KexType& fwkType() const override { return Type::_fwkType(); }

  /// The base's text: a type adds no attributes of its own.
  Kex::String8 attributeString(Kex::AttributeId id) const override {
    return Ipmi::SupportedPowerSupplyDescriptorBase::attributeString(id);
  }

  /// Sets `managed` and `fdl` from `idpromContents`, which must have product info.
  void doGenerateFdl(Kex::Ptr<Ipmi::IdpromContents> const& idpromContents) override {
    IpmiIdentifier::doGenerateFdl(*this, modelOf(kModel), idpromContents);
  }
};

// NOLINTBEGIN(bugprone-macro-parentheses)
#define EMERSON_DESCRIPTOR_CLASS(type, stem)                \
  class type : public Descriptor<type, ModelId::type> {     \
   public:                                                  \
    using Descriptor::Descriptor;                           \
    static Kex::KexType& _fwkType(); /* its type record */  \
  };                                                        \
  /* A new descriptor of that type and name; never null. */ \
  KEX_API Kex::Ptr<type> stem##Factory(Kex::Name name);
// NOLINTEND(bugprone-macro-parentheses)
EMERSON_DESCRIPTOR_TYPES(EMERSON_DESCRIPTOR_CLASS)
#undef EMERSON_DESCRIPTOR_CLASS

}  // namespace Emerson::IpmiIdentifier
