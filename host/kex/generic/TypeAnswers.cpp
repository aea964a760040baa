// What a type record answers by itself: construction from a name, holders of its values, adapters.
#include "host/kex/base/Format.h"
#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/generic/TextConversion.h"

namespace Kex {

namespace {

/// The adapter of an object whose type `level` declares nothing: its base knows the attributes.
class PlainAdapter final : public GenericIfPtrInterface {
 public:
  PlainAdapter(KexType const& level, Ptr<PtrInterface> const& object, bool isConst)
      : GenericIfPtrInterface(object, isConst), level_(level) {}

  KexAttr const* attribute(Name const& name) const override {
    return isRoot() ? nullptr : baseGenericIf(level_)->attribute(name);
  }
  Ptr<GenericIf> doAccess(AttributeRequest const& request) const override {
    return isRoot() ? GenericIf::doAccess(request) : baseGenericIf(level_)->doAccess(request);
  }
  Ptr<GenericIterator> iterator(AttributeId id) const override {
    return isRoot() ? GenericIf::iterator(id) : baseGenericIf(level_)->iterator(id);
  }

 private:
  bool isRoot() const { return level_.base() == nullptr; }

  KexType const& level_;
};

}  // namespace

Ptr<GenericIf> KexType::genericIf(GenericIf const* arguments, bool) const {
  if (creator_ == nullptr) {
    GenericIf::throwTypeException(
        format("%s cannot be made from its name alone", fullName().charPtr()));
  }
  auto const* const list = dynamic_cast<GenericIf::List_ const*>(arguments);
  if (list == nullptr) {
    GenericIf::throwTypeException("Kex::GenericIf::List_");
  }
  auto const& elements = list->elements();
  auto const name = convertTo<Name>(elements.empty() ? nullptr : elements.front().ptr());
  if (!name) {
    GenericIf::throwTypeException("name");
  }
  if (elements.size() > 1) {
    GenericIf::throwUnknownArgException(name_);
  }
  return genericIf(creator_(*name), false);
}

Ptr<GenericIf> KexType::valueFromText(String8 const& text) const {
  return make<Holder<Ptr<PtrInterface>>>(textToPtr(text, *this), *this);
}

Ptr<GenericIf> KexType::valueFromPtr(PtrInterface* object) const {
  bool const isOurs = object != nullptr && object->fwkType().isA(*this);
  return make<Holder<Ptr<PtrInterface>>>(Ptr(isOurs ? object : nullptr), *this);
}

Ptr<GenericIf> KexType::newAdapter(Ptr<PtrInterface> const& object, bool isConst) const {
  return make<PlainAdapter>(*this, object, isConst);
}

Ptr<GenericIf> KexType::genericIf(Ptr<PtrInterface> const& object, bool isConst) {
  return object->fwkType().newAdapter(object, isConst);
}

}  // namespace Kex
