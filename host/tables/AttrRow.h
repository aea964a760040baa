// One row an attribute: what is declared of it, and how a request to it is carried out.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "host/kex/generic/GenericIf.h"
#include "host/kex/type/KexType.h"

namespace Tables {

struct AttrRow;

using RecordFn = Kex::KexType& (*)();

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
  Kex::Ptr<Kex::GenericIf> (*carryOut)(AttrRow const& row, Kex::PtrInterface& object,
                                       Kex::AttributeRequest const& request);
  /// A walk over the members of a collection; null for anything else.
  Kex::Ptr<Kex::GenericIterator> (*iterator)(Kex::PtrInterface const& object) = nullptr;
};

/// One attribute of a type.
struct AttrRow {
  /// Whether schemas show the attribute and whether requests reach it.
  enum class Use : Kex::U8 { declaredAndDispatched, dispatchedOnly, declaredOnly };
  /// Which introspection flag is set.
  enum class Introspection : Kex::U8 { none, function, independentDomainAttr };

  char const* name;
  Kex::AttributeId id;
  AttrAccess access;
  Introspection introspection = Introspection::none;
  Kex::KexAttrFlags flags{};
  Use use = Use::declaredAndDispatched;
  /// The declared value type where it is not that of the member.
  RecordFn declaredType = nullptr;

  bool isDeclared() const { return use != Use::dispatchedOnly; }
  Kex::KexType& valueType() const {
    return declaredType != nullptr ? declaredType() : access.valueType();
  }
};

/// The row that answers to `id`; null where none does.
AttrRow const* dispatchedRow(std::span<AttrRow const> rows, Kex::AttributeId id);

/// Declares the schema of `record`: copies of the attributes of `base` (null: none) in their order,
/// then those of `rows` that are declared. `told`, where there is one, is called with each as it is
/// enqueued.
void declareAttributes(Kex::KexType& record, Kex::KexType const* base,
                       std::span<AttrRow const> rows,
                       void (*told)(Kex::KexAttr& attribute) = nullptr);

}  // namespace Tables
