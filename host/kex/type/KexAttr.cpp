// Kex::KexAttr, what the schema of a type says of one attribute.
#include "host/kex/type/KexAttr.h"

#include "host/kex/base/Exception.h"

namespace Kex {

KexAttrIntrospectionFlags::KexAttrIntrospectionFlags(U32 value) : value_(value) {
  if (value > 0x3f) {
    throwRangeException("KexAttrIntrospectionFlags::value > 0x3f not allowed");
  }
}

KexAttr::~KexAttr() = default;

Ptr<KexAttr> KexAttr::copyFor(KexType const& heir) const {
  auto copy = make<KexAttr>(heir, name_, valueType_, keyType_, flags_, id_);
  copy->introspectionFlags_ = introspectionFlags_;
  copy->arguments_ = arguments_;
  copy->isInherited_ = true;
  return copy;
}

KexAttr::Kind KexAttr::kind() const {
  if (introspectionFlags_.isFunction()) {
    return Kind::function;
  }
  if (keyType_ != nullptr) {
    return Kind::collection;
  }
  return arguments_.empty() ? Kind::value : Kind::instantiating;
}

}  // namespace Kex
