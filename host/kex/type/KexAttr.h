// Kex::KexAttr, what the schema of a type says of one attribute.
#pragma once

#include <array>
#include <vector>

#include "host/kex/notify/PtrInterface.h"

namespace Kex {

/// Six bits that tell introspection how to treat an attribute.
class KEX_API KexAttrIntrospectionFlags {
 public:
  /// Throws the range exception "KexAttrIntrospectionFlags::value > 0x3f not allowed".
  explicit KexAttrIntrospectionFlags(U32 value);

  /// Six bits, 0 to 0x3F.
  U32 value() const { return value_; }
  /// The attribute is called, not read.
  bool isFunction() const { return (value_ & 1U) != 0; }
  void isFunctionIs(bool on) { bitIs(1U, on); }
  /// The attribute's value depends on no other attribute.
  bool isIndependentDomainAttr() const { return (value_ & 2U) != 0; }
  void isIndependentDomainAttrIs(bool on) { bitIs(2U, on); }

 private:
  void bitIs(U32 bit, bool on) { value_ = on ? value_ | bit : value_ & ~bit; }

  U32 value_;
};

/// The two flag words of an attribute, passed as they stand.
using KexAttrFlags = std::array<U32, 2>;

/// Name and type name of an argument.
struct KexArgument {
  Name name;
  Name type;
};

/// A link from an attribute to another one; empty where there is none.
using KexAttrLink = Name;

/// One attribute of a type.
class KEX_API KexAttr : public PtrInterface {
 public:
  /// How an attribute is used.
  enum class Kind : U8 { function, value, collection, instantiating };

  /// `keyType` is null but for a collection. Both types live as long as the process.
  KexAttr(KexType const& owner, Name name, KexType const& valueType, KexType const* keyType,
          KexAttrFlags flags, AttributeId id)
      : owner_(owner),
        name_(std::move(name)),
        valueType_(valueType),
        keyType_(keyType),
        flags_(flags),
        id_(id) {}
  ~KexAttr() override;

  /// The same attribute for a type that inherits it.
  Ptr<KexAttr> copyFor(KexType const& heir) const;

  /// The type whose schema the attribute stands in.
  KexType const& owner() const { return owner_; }
  /// Whether the attribute was inherited as it is.
  bool isInherited() const { return isInherited_; }
  Name const& name() const { return name_; }
  AttributeId id() const { return id_; }
  KexType const& valueType() const { return valueType_; }
  /// The key type of a collection, else null.
  KexType const* keyType() const { return keyType_; }
  KexAttrFlags const& flags() const { return flags_; }
  Kind kind() const;

  KexAttrIntrospectionFlags introspectionFlags() const { return introspectionFlags_; }
  void introspectionFlagsIs(KexAttrIntrospectionFlags flags) { introspectionFlags_ = flags; }
  std::vector<KexArgument> const& arguments() const { return arguments_; }
  void argumentQEnq(KexArgument const& argument) { arguments_.push_back(argument); }

 private:
  KexType const& owner_;
  Name name_;
  KexType const& valueType_;
  KexType const* keyType_;
  KexAttrFlags flags_;
  AttributeId id_;
  KexAttrIntrospectionFlags introspectionFlags_{0};
  std::vector<KexArgument> arguments_;
  bool isInherited_ = false;
};

}  // namespace Kex
