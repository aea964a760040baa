// The generic interface: values and objects that are handled by name and identifier alone.
#pragma once

#include <vector>

#include "host/kex/base/Exception.h"
#include "host/kex/notify/PtrInterface.h"

namespace Kex {

class GenericIf;
class KexAttr;

/// Operation codes of a request to an attribute.
enum OpCode : U8 {
  kRead = 0,      ///< reads a value, calls a function
  kSize = 1,      ///< number of members of a collection
  kBuckets = 2,   ///< number of different hashes among a collection's keys
  kWrite = 128,   ///< writes a value, creates an instantiating attribute's object
  kDelete = 129,  ///< deletes
};

/// A request to an attribute: what is to be done, at which member of a collection, with which
/// value or argument list.
struct AttributeRequest {
  AttributeId id = 0;
  U8 code = kRead;
  GenericIf const* index = nullptr;
  GenericIf const* value = nullptr;
};

/// Walks the members of a collection attribute.
class KEX_API GenericIterator : public PtrInterface {
 public:
  ~GenericIterator() override;
  virtual bool isAtEnd() const = 0;
  virtual Ptr<GenericIf> key() const = 0;
  virtual Ptr<GenericIf> value() const = 0;
  /// Goes on to the next member. Not at the end.
  virtual void advance() = 0;
};

/// A value, an argument list, or an object with attributes.
class KEX_API GenericIf : public PtrInterface {
 public:
  class List_;

  ~GenericIf() override;

  /// The record of the type of what is held.
  virtual KexType const& type() const = 0;
  /// The object as one of `wanted`; throws a type exception when that is not granted.
  virtual Ptr<PtrInterface> castTo(KexType const& wanted) const;
  /// The attribute of this name; null when there is none.
  virtual KexAttr const* attribute(Name const& name) const;
  /// Carries `request` out. Null where there is nothing to answer. Throws a range exception for an
  /// identifier that is no attribute's. An object that the request may have changed is told.
  Ptr<GenericIf> access(AttributeRequest const& request) const;
  /// A walk over a collection attribute.
  virtual Ptr<GenericIterator> iterator(AttributeId id) const;

  /// The value as text.
  virtual String8 text() const = 0;
  /// The object; null when a value, or nothing, is held.
  virtual Ptr<PtrInterface> object() const { return {}; }

  /// What carries requests out; see `access`.
  virtual Ptr<GenericIf> doAccess(AttributeRequest const& request) const;

  /// Each throws an exception whose text is the name of what was wrong.
  [[noreturn]] static void throwTypeException(String8 const& text);
  [[noreturn]] static void throwConstException(String8 const& text);
  /// `code` is one of `OpCode`, or none that there is.
  [[noreturn]] static void throwOpNotSupportedException(Name const& attribute, U8 code,
                                                        bool isCollection);
  [[noreturn]] static void throwUnknownArgException(Name const& name);
  [[noreturn]] static void throwBadIndexAttrException(Name const& attribute);
};

/// A type did not fit: of an argument, a value, an index or a cast.
class KEX_API TypeException : public Exception {
 public:
  explicit TypeException(String8 text) : Exception(std::move(text), kType, true) {}
  ~TypeException() override;
};

/// A const instance was to be modified.
class KEX_API ConstException : public Exception {
 public:
  explicit ConstException(String8 text) : Exception(std::move(text), kConst, true) {}
  ~ConstException() override;
};

/// The attribute does not know the operation code.
class KEX_API OpNotSupportedException : public Exception {
 public:
  explicit OpNotSupportedException(String8 attribute)
      : Exception(std::move(attribute), kOpNotSupported, true) {}
  ~OpNotSupportedException() override;
};

/// An argument beyond the declared ones.
class KEX_API UnknownArgException : public Exception {
 public:
  explicit UnknownArgException(String8 name) : Exception(std::move(name), kUnknownArg, true) {}
  ~UnknownArgException() override;
};

/// An index where none is taken.
class KEX_API BadIndexAttrException : public Exception {
 public:
  explicit BadIndexAttrException(String8 attribute)
      : Exception(std::move(attribute), kBadIndexAttr, true) {}
  ~BadIndexAttrException() override;
};

/// An argument list. Its elements may be null.
class KEX_API GenericIf::List_ : public GenericIf {
 public:
  KexType const& type() const override;
  String8 text() const override;

  /// Puts an element at the end.
  void append(Ptr<GenericIf> const& element) { elements_.push_back(element); }
  std::vector<Ptr<GenericIf>> const& elements() const { return elements_; }

 private:
  std::vector<Ptr<GenericIf>> elements_;
};

/// Base of the adapters of counted objects.
class KEX_API GenericIfPtrInterface : public GenericIf {
 public:
  GenericIfPtrInterface(Ptr<PtrInterface> const& object, bool isConst)
      : object_(object), isConst_(isConst) {}

  KexType const& type() const override;
  Ptr<PtrInterface> castTo(KexType const& wanted) const override;
  KexAttr const* attribute(Name const& name) const override;
  String8 text() const override;
  Ptr<PtrInterface> object() const override { return object_; }
  bool isConst() const { return isConst_; }

 protected:
  /// The adapter that the base of `type` gives the same object.
  Ptr<GenericIf> baseGenericIf(KexType const& type) const;

 private:
  Ptr<PtrInterface> object_;
  bool isConst_;
};

/// Base of the adapters of entities, and the adapter that knows the attributes which all entities
/// have.
class KEX_API GenericIfEntity : public GenericIfPtrInterface {
 public:
  using GenericIfPtrInterface::GenericIfPtrInterface;

  KexType const& type() const override;
  Ptr<GenericIf> doAccess(AttributeRequest const& request) const override;
};

}  // namespace Kex
