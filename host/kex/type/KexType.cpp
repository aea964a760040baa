// Kex::KexType, the record of a type: name, place in the tree of types, schema, creation.
#include "host/kex/type/KexType.h"

#include <algorithm>
#include <map>
#include <ranges>

#include "host/kex/base/Exception.h"
#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/TextConversion.h"
#include "host/tables/AttrRow.h"

namespace Kex {

namespace {

std::map<Name, KexType*>& typeTree() {
  // Never destroyed: records live as long as the process.
  static auto& tree = *new std::map<Name, KexType*>;
  return tree;
}

std::string_view lastName(std::string_view fullName) {
  std::size_t const colon = fullName.rfind(':');
  return colon == std::string_view::npos ? fullName : fullName.substr(colon + 1);
}

template <class Wanted>
KexAttr* findAttribute(std::vector<Ptr<KexAttr>> const& attributes, Wanted wanted) {
  auto const found = std::ranges::find_if(attributes, wanted);
  return found == attributes.end() ? nullptr : found->ptr();
}

}  // namespace

KexType::KexType(Name shortName, KexType const* scope, KexType* base, TypeFlags flags)
    : name_(std::move(shortName)), scope_(scope), base_(base), flags_(flags) {}

KexType::~KexType() = default;

Ptr<GenericIf> KexType::genericIf(GenericIf const*, bool) const {
  GenericIf::throwTypeException(name_.str());
}

Ptr<GenericIf> KexType::valueFromText(String8 const& text) const {
  return make<Holder<Ptr<PtrInterface>>>(textToPtr(text, *this), *this);
}

Ptr<GenericIf> KexType::valueFromPtr(PtrInterface* object) const {
  bool const isOurs = object != nullptr && object->fwkType().isA(*this);
  return make<Holder<Ptr<PtrInterface>>>(Ptr(isOurs ? object : nullptr), *this);
}

Ptr<GenericIf> KexType::newAdapter(Ptr<PtrInterface> const& object, bool isConst) const {
  return make<GenericIfPtrInterface>(object, isConst);
}

Ptr<GenericIf> KexType::genericIf(Ptr<PtrInterface> const& object, bool isConst) {
  return object->fwkType().newAdapter(object, isConst);
}

String8 const& KexType::fullName() const { return fullName_.empty() ? name_.str() : fullName_; }

bool KexType::isA(KexType const& other) const {
  for (KexType const* type = this; type != nullptr; type = type->base_) {
    if (type == &other) {
      return true;
    }
  }
  return false;
}

KexAttr& KexType::defNoninstantiatingAttr(Name const& name, KexType const& valueType,
                                          KexType const* keyType, KexAttrFlags flags,
                                          KexAttrIntrospectionFlags introspection, AttributeId id) {
  attrDel(name);
  auto const attribute = make<KexAttr>(*this, name, valueType, keyType, flags, id);
  attribute->introspectionFlagsIs(introspection);
  attributeQEnq(attribute);
  return *attribute;
}

void KexType::attrDel(Name const& name) {
  std::erase_if(attributes_, [&](auto const& attribute) { return attribute->name() == name; });
}

Ptr<KexAttr> KexType::attrIs(Name const& name, KexType const& valueType, KexAttrLink const&,
                             KexAttrLink const&, KexAttrFlags flags, AttributeId id) {
  return make<KexAttr>(*this, name, valueType, nullptr, flags, id);
}

std::vector<Ptr<KexAttr>> const& KexType::attributeQ() const {
  if (hasPendingRows_) {
    // What is declared late was the type's from the start.
    auto& record = const_cast<KexType&>(*this);
    record.hasPendingRows_ = false;
    declareAttributes(record, pendingRows_);
  }
  return attributes_;
}

void KexType::pendingRowsIs(std::span<AttrRow const> rows) {
  pendingRows_ = rows;
  hasPendingRows_ = true;
}

KexAttr* KexType::attr(Name const& name) const {
  return findAttribute(attributeQ(), [&](auto const& entry) { return entry->name() == name; });
}

KexAttr* KexType::attr(AttributeId id) const {
  return findAttribute(attributeQ(), [&](auto const& entry) { return entry->id() == id; });
}

void KexType::typeNodeIs(KexType& record, Name const& fullName) {
  record.fullName_ = fullName.str();
  typeTree()[fullName] = &record;
}

KexType* KexType::typeNode(Name const& fullName) {
  auto const found = typeTree().find(fullName);
  return found == typeTree().end() ? nullptr : found->second;
}

KexType& enterHostType(Ptr<KexType> const& record, std::string_view fullName) {
  record->isNondestructingIs(true);
  if (record->base() != nullptr) {
    record->base()->derivedTypeQEnq(*record);
  }
  KexType::typeNodeIs(*record, Name(String8(fullName)));
  return *record;
}

KexType& newPlainHostType(std::string_view fullName, KexType* base, std::size_t size) {
  auto const record = make<KexType>(Name(String8(lastName(fullName))), nullptr, base, TypeFlags{});
  record->sizeIs(size);
  return enterHostType(record, fullName);
}

}  // namespace Kex
