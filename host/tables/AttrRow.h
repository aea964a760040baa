// One row an attribute: what is declared of it, and how a request to it is carried out.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "host/kex/generic/GenericIf.h"
#include "host/kex/type/KexType.h"

namespace Kex {

struct AttrRow;

using RecordFn = KexType& (*)();

/// How an attribute is reached: made by `function`, `value`, `instantiating`, `collection` of
/// Access.h from the members that serve it, so that types are never written twice.
struct AttrAccess {
  /// An argument of a function, or of the constructor of an instantiating attribute.
  struct Argument {
    char const* name = nullptr;
    RecordFn type = nullptr;
  };

  RecordFn valueType;
  RecordFn keyType = nullptr;
  /// In order; null names where there is none.
  std::array<Argument, 4> arguments{};
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
  Introspection introspection = Introspection::none;
  KexAttrFlags flags{};
  Use use = Use::declaredAndDispatched;
  /// The declared value type where it is not that of the member.
  RecordFn declaredType = nullptr;

  bool isDeclared() const { return use != Use::dispatchedOnly; }
  KexType& valueType() const {
    return declaredType != nullptr ? declaredType() : access.valueType();
  }
};

/// The row that answers to `id`; null where none does.
AttrRow const* dispatchedRow(std::span<AttrRow const> rows, AttributeId id);

/// Declares the schema of `record`: copies of its base's attributes in their order, then those of
/// `rows` that are declared. `told`, where there is one, is called with each as it is enqueued.
void declareAttributes(KexType& record, std::span<AttrRow const> rows,
                       void (*told)(KexAttr& attribute) = nullptr);

}  // namespace Kex
