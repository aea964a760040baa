// Who is told of the schemas that types declare.
#pragma once

#include "host/kex/type/KexAttr.h"
#include "host/kex/type/KexType.h"

namespace Kex {

/// Is told of schemas as they are declared: nested scopes (name spaces, types), each type's
/// attributes inside its scope. It need not stay alive once it is no reactor's target any more.
class KEX_API IntrospectionTarget {
 public:
  IntrospectionTarget() = default;
  IntrospectionTarget(IntrospectionTarget const&) = delete;
  IntrospectionTarget& operator=(IntrospectionTarget const&) = delete;
  virtual ~IntrospectionTarget();

  /// A target that is switched off is told nothing.
  virtual bool isOn() const { return true; }
  /// A name space begins.
  virtual void handleNameSpace(Name const& name) = 0;
  /// `base` is null for a root.
  virtual void handleType(KexType& type, KexType* base) = 0;
  /// The type that began last has this attribute.
  virtual void handleAttr(KexAttr& attribute) = 0;
  /// All of the attribute that was told of last has been told.
  virtual void handleAttrContextExit() = 0;
  /// A type or a name space ends.
  virtual void handleScopeExit() = 0;
};

/// Passes what types declare on to its current target.
class KEX_API IntrospectionReactor {
 public:
  /// The process's reactor.
  static IntrospectionReactor& global();

  /// Sets the target; null for none. Not owned.
  void targetIs(IntrospectionTarget* target) { target_ = target; }
  /// Whether anybody listens: there is a target and it is on.
  bool isActive() const { return target_ != nullptr && target_->isOn(); }

  void handleNameSpace(Name const& name);
  /// `base` is null for a root.
  void handleType(KexType& type, KexType* base);
  void handleAttr(KexAttr& attribute);
  void handleAttrContextExit();
  void handleScopeExit();

 private:
  IntrospectionTarget* target_ = nullptr;
};

}  // namespace Kex
