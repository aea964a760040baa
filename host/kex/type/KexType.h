// Kex::KexType, the record of a type: name, bases, schema, creation.
#pragma once

#include <concepts>
#include <string_view>
#include <type_traits>
#include <vector>

#include "host/kex/notify/PtrInterface.h"
#include "host/kex/type/KexAttr.h"

namespace Kex {

class GenericIf;

/// Flags of a type; a set of bits that this host gives no meaning.
struct TypeFlags {
  U32 bits = 0;
};

/// Record of one type. Records live as long as the process.
class KEX_API KexType : public PtrInterface {
 public:
  /// `scope` is the record of the type that encloses this one, null for none; `base` the base
  /// type's record, null for a root.
  KexType(Name shortName, KexType const* scope, KexType* base, TypeFlags flags);
  ~KexType() override;

  /// Creates an object from an argument list (a `GenericIf::List_`) and returns its adapter. The
  /// framework's own takes the name alone; a type without a creator is refused with a type
  /// exception.
  virtual Ptr<GenericIf> genericIf(GenericIf const* arguments, bool isConst) const;
  /// A holder of the value that `text` stands for. The framework's own reads a reference to an
  /// object of this type.
  virtual Ptr<GenericIf> valueFromText(String8 const& text) const;
  /// A holder of a reference to `object`; of a null one if it is null or of another type.
  virtual Ptr<GenericIf> valueFromPtr(PtrInterface* object) const;
  /// The adapter of an object of this type; the framework's own leaves attributes to the base's.
  virtual Ptr<GenericIf> newAdapter(Ptr<PtrInterface> const& object, bool isConst) const;
  /// The adapter that the object's own type gives it.
  static Ptr<GenericIf> genericIf(Ptr<PtrInterface> const& object, bool isConst);

  Name const& name() const { return name_; }
  /// Null for none.
  KexType const* scope() const { return scope_; }
  /// Null for a root.
  KexType* base() const { return base_; }
  /// The name under which the type was entered in the type tree, else the short name.
  String8 const& fullName() const { return nodeName().str(); }
  /// The same, as a name.
  Name const& nodeName() const { return fullName_.str().empty() ? name_ : fullName_; }
  /// Whether this is `other` or derived from it.
  bool isA(KexType const& other) const;

  void derivedTypeQEnq(KexType& derived) { derivedTypes_.push_back(&derived); }
  /// In the order in which they came into being. Records live as long as the process.
  std::vector<KexType*> const& derivedTypes() const { return derivedTypes_; }

  /// Instance size in bytes, 0 where not declared.
  std::size_t size() const { return size_; }
  void sizeIs(std::size_t size) { size_ = size; }
  bool isEntity() const { return isEntity_; }
  void isEntityIs(bool isEntity) { isEntity_ = isEntity; }
  bool hasGenericIfSupport() const { return hasGenericIfSupport_; }
  void hasGenericIfSupportIs(bool has) { hasGenericIfSupport_ = has; }
  /// Makes an object of this type from its name.
  using Creator = Ptr<PtrInterface> (*)(Name const& name);
  void creatorIs(Creator creator) { creator_ = creator; }

  void constructorArgNameQEnq(Name const& name) { constructorArgNames_.push_back(name); }
  void constructorArgTypeQEnq(Name const& type) { constructorArgTypes_.push_back(type); }
  std::vector<Name> const& constructorArgNames() const { return constructorArgNames_; }
  std::vector<Name> const& constructorArgTypes() const { return constructorArgTypes_; }

  /// Declares an attribute that instantiates nothing, all at once, and enqueues it.
  KexAttr& defNoninstantiatingAttr(Name const& name, KexType const& valueType,
                                   KexType const* keyType, KexAttrFlags flags,
                                   KexAttrIntrospectionFlags introspection, AttributeId id);
  /// Takes the attribute of this name out of the queue, if there is one.
  void attrDel(Name const& name);
  /// Makes an attribute; `attributeQEnq` puts it into the queue.
  Ptr<KexAttr> attrIs(Name const& name, KexType const& valueType, KexAttrLink const& first,
                      KexAttrLink const& second, KexAttrFlags flags, AttributeId id);
  void attributeQEnq(Ptr<KexAttr> const& attribute);
  std::vector<Ptr<KexAttr>> const& attributeQ() const;
  /// The attribute of this name or identifier, null for none. Not owned by the caller.
  KexAttr* attr(Name const& name) const;
  KexAttr* attr(AttributeId id) const;

  /// Enters `record` in the type tree under `fullName`.
  static void typeNodeIs(KexType& record, Name const& fullName);
  /// The record of this full name, null if there is none.
  static KexType* typeNode(Name const& fullName);

 protected:
  /// Enqueues the attributes of a type that does so by itself. Called once, when the schema is
  /// first asked for: attributes name types whose records may still be in the making before.
  virtual void declareAttributes() {}

 private:
  Name name_;
  KexType const* scope_;
  KexType* base_;
  Name fullName_;
  std::vector<KexType*> derivedTypes_;
  std::size_t size_ = 0;
  bool isEntity_ = false;
  bool hasGenericIfSupport_ = false;
  std::vector<Name> constructorArgNames_;
  std::vector<Name> constructorArgTypes_;
  Creator creator_ = nullptr;
  std::vector<Ptr<KexAttr>> attributes_;
  bool areAttributesDeclared_ = false;
};

/// Keeps a record for the life of the process: never destroyed, known to its base, entered in the
/// type tree under `fullName`.
KEX_API KexType& enterHostType(Ptr<KexType> const& record, std::string_view fullName);

/// The record of a host type that has no schema of its own. `creator` is null where objects cannot
/// be made from a name alone.
KEX_API KexType& newPlainHostType(std::string_view fullName, KexType* base, std::size_t size,
                                  KexType::Creator creator = nullptr);

/// `sizeof(T)` as its size; see `newPlainHostType`.
template <class T>
KexType& newHostType(std::string_view fullName, KexType* base) {
  KexType::Creator creator = nullptr;
  if constexpr (std::derived_from<T, PtrInterface> && std::is_constructible_v<T, Name const&>) {
    creator = [](Name const& name) -> Ptr<PtrInterface> { return make<T>(name); };
  }
  return newPlainHostType(fullName, base, sizeof(T), creator);
}

}  // namespace Kex
