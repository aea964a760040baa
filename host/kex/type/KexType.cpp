// Kex::KexType, the record of a type: name, bases, schema, creation.
#include "host/kex/type/KexType.h"

#include <algorithm>
#include <map>
#include <ranges>

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

KexType::KexType(Name shortName, KexType const* scope, KexType* base, TypeFlags)
    : name_(std::move(shortName)), scope_(scope), base_(base) {}

KexType::~KexType() = default;

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

void KexType::attributeQEnq(Ptr<KexAttr> const& attribute) {
  if (attributes_.empty() && base_ != nullptr) {
    // Most types have their base's and a few more.
    constexpr std::size_t kMore = 4;
    attributes_.reserve(base_->attributes_.size() + kMore);
  }
  attributes_.push_back(attribute);
}

std::vector<Ptr<KexAttr>> const& KexType::attributeQ() const {
  if (!areAttributesDeclared_) {
    // What is declared late was the type's from the start.
    auto& record = const_cast<KexType&>(*this);
    record.areAttributesDeclared_ = true;
    record.declareAttributes();
  }
  return attributes_;
}

KexAttr* KexType::attr(Name const& name) const {
  return findAttribute(attributeQ(), [&](auto const& entry) { return entry->name() == name; });
}

KexAttr* KexType::attr(AttributeId id) const {
  return findAttribute(attributeQ(), [&](auto const& entry) { return entry->id() == id; });
}

void KexType::typeNodeIs(KexType& record, Name const& fullName) {
  record.fullName_ = fullName;
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

KexType& newPlainHostType(std::string_view fullName, KexType* base, std::size_t size,
                          KexType::Creator creator) {
  auto const record = make<KexType>(Name(String8(lastName(fullName))), nullptr, base, TypeFlags{});
  record->sizeIs(size);
  record->creatorIs(creator);
  return enterHostType(record, fullName);
}

}  // namespace Kex
