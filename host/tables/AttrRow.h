// One row an attribute: what is declared of it, and how a request to it is carried out.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "host/kex/generic/GenericIf.h"
#include "host/kex/generic/Holder.h"

namespace Kex {

struct AttrRow;

/// How an attribute is reached: made by `function`, `value`, `instantiating`, `collection` below
/// from the members that serve it, so that types are never written twice.
struct AttrAccess {
  using RecordFn = KexType& (*)();

  KexAttr::Kind kind;
  RecordFn valueType;
  RecordFn keyType = nullptr;
  /// Types of the arguments of a function, or of the constructor of an instantiating attribute.
  std::array<RecordFn, 4> argumentTypes{};
  /// Carries `request` out at `object`.
  Ptr<GenericIf> (*carryOut)(AttrRow const& row, PtrInterface& object,
                             AttributeRequest const& request);
  /// A walk over the members of a collection; null for anything else.
  Ptr<GenericIterator> (*iterator)(PtrInterface const& object) = nullptr;
};

/// One attribute of a type.
struct AttrRow {
  /// Whether schemas show the attribute and whether requests reach it.
  enum class Use : U8 { declaredAndDispatched, dispatchedOnly, declaredOnly };
  /// Which introspection flag is set.
  enum class Introspection : U8 { none, function, independentDomainAttr };

  char const* name;
  AttributeId id;
  AttrAccess access;
  /// Names of the arguments, in order; null where there is none.
  std::array<char const*, 4> arguments{};
  Introspection introspection = Introspection::none;
  KexAttrFlags flags{};
  Use use = Use::declaredAndDispatched;
  /// The declared value type where it is not that of the member.
  AttrAccess::RecordFn declaredType = nullptr;

  KexType& valueType() const {
    return declaredType != nullptr ? declaredType() : access.valueType();
  }
};

/// The row that answers to `id`; null where none does.
KEX_API AttrRow const* dispatchedRow(std::span<AttrRow const> rows, AttributeId id);

/// Enqueues at `record` a copy of each attribute of its base.
KEX_API void inheritAttributes(KexType& record);
/// Declares the rows of `record` that are to be declared.
KEX_API void declareRows(KexType& record, std::span<AttrRow const> rows);
/// Makes the attribute of `row` in `record` and enqueues it.
KEX_API KexAttr& declareRow(KexType& record, AttrRow const& row);

/// The elements of an argument list, taken one by one. Throws the type exception
/// "Kex::GenericIf::List_" when there is no list.
class KEX_API ArgumentReader {
 public:
  explicit ArgumentReader(GenericIf const* list);

  /// The next argument; throws a type exception naming it when it is missing or does not convert.
  template <class T>
  T next(char const* name) {
    auto value = convertTo<T>(nextElement());
    if (!value) {
      GenericIf::throwTypeException(name);
    }
    return *std::move(value);
  }
  /// Throws the unknown-argument exception naming `owner` when an element is left.
  void end(Name const& owner) const;

 private:
  GenericIf const* nextElement();

  GenericIf::List_ const& list_;
  std::size_t next_ = 0;
};

}  // namespace Kex
