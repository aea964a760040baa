// Who is told of the schemas that types declare.
#include "host/kex/type/Introspection.h"

namespace Kex {

IntrospectionTarget::~IntrospectionTarget() = default;

IntrospectionReactor& IntrospectionReactor::global() {
  static IntrospectionReactor reactor;
  return reactor;
}

void IntrospectionReactor::handleNameSpace(Name const& name) {
  if (isActive()) {
    target_->handleNameSpace(name);
  }
}

void IntrospectionReactor::handleType(KexType& type, KexType* base) {
  if (isActive()) {
    target_->handleType(type, base);
  }
}

void IntrospectionReactor::handleAttr(KexAttr& attribute) {
  if (isActive()) {
    target_->handleAttr(attribute);
  }
}

void IntrospectionReactor::handleAttrContextExit() {
  if (isActive()) {
    target_->handleAttrContextExit();
  }
}

void IntrospectionReactor::handleScopeExit() {
  if (isActive()) {
    target_->handleScopeExit();
  }
}

}  // namespace Kex
