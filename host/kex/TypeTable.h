// What there is to know of a type, as one table; its record and its adapter.
#pragma once

#include <span>
#include <type_traits>

#include "host/kex/AttrRow.h"
#include "host/kex/Entity.h"
#include "host/kex/GenericIf.h"
#include "host/kex/KexType.h"

namespace Kex {

/// Name and type name of a constructor argument.
struct ConstructorArgument {
  char const* name;
  char const* type;
};

/// All that the framework needs to know of a type.
struct TypeTable {
  using RecordFn = KexType& (*)();

  char const* shortName;
  char const* fullName;
  RecordFn base;
  std::size_t size;
  bool isEntity;
  std::span<ConstructorArgument const> constructorArguments;
  std::span<AttrRow const> rows;
  /// The records to which an object may be cast, its own first.
  std::span<RecordFn const> castChain;
  /// The generic construction from a name; null where the type has none.
  Ptr<PtrInterface> (*create)(Name name) = nullptr;
};

/// The adapter of an object whose type has a table; `T` is the type.
template <class T>
class TableAdapter final : public std::conditional_t<std::is_base_of_v<Entity, T>, GenericIfEntity,
                                                     GenericIfPtrInterface> {
  using Base =
      std::conditional_t<std::is_base_of_v<Entity, T>, GenericIfEntity, GenericIfPtrInterface>;

 public:
  TableAdapter(TypeTable const& table, Ptr<PtrInterface> const& object, bool isConst)
      : Base(object, isConst), table_(table) {}

  KexType const& type() const override { return T::_fwkType(); }

  Ptr<PtrInterface> castTo(KexType const& wanted) const override {
    for (auto const record : table_.castChain) {
      if (&record() == &wanted) {
        return this->object();
      }
    }
    GenericIf::throwTypeException(table_.shortName);
  }

  KexAttr const* attribute(Name const& name) const override {
    KexAttr const* const own = type().attr(name);
    return own != nullptr ? own : base()->attribute(name);
  }

  Ptr<GenericIf> access(AttributeRequest const& request) const override {
    if (request.code >= 128 && this->isConst()) {
      GenericIf::throwConstException("attempting to modify a const instance");
    }
    AttrRow const* const row = dispatchedRow(table_.rows, request.id);
    return row != nullptr ? row->access.carryOut(*row, *this->object(), request)
                          : base()->access(request);
  }

  Ptr<GenericIterator> iterator(AttributeId id) const override {
    AttrRow const* const row = dispatchedRow(table_.rows, id);
    return row != nullptr && row->access.iterator != nullptr ? row->access.iterator(*this->object())
                                                             : base()->iterator(id);
  }

 private:
  Ptr<GenericIf> base() const { return this->baseGenericIf(T::_fwkType()); }

  TypeTable const& table_;
};

/// The record of a type that has a table.
template <class T>
class TableType final : public KexType {
 public:
  /// `table` must live as long as the process.
  TableType(TypeTable const& table, KexType* base)
      : KexType(table.shortName, nullptr, base, TypeFlags{}), table_(table) {}

  Ptr<GenericIf> genericIf(GenericIf const* arguments, bool isConst) const override {
    if (table_.create == nullptr) {
      return KexType::genericIf(arguments, isConst);
    }
    ArgumentReader reader(arguments);
    auto name = reader.next<Name>("name");
    reader.end(table_.shortName);
    return KexType::genericIf(table_.create(std::move(name)), false);
  }

  Ptr<GenericIf> valueFromText(String8 const& text) const override {
    return holderOf(strepToValue<Ptr<T>>(text));
  }

  Ptr<GenericIf> valueFromPtr(PtrInterface* object) const override {
    return holderOf(Ptr<T>(dynamic_cast<T*>(object)));
  }

  Ptr<GenericIf> newAdapter(Ptr<PtrInterface> const& object, bool isConst) const override {
    return make<TableAdapter<T>>(table_, object, isConst);
  }

 private:
  TypeTable const& table_;
};

/// Declares to `record` what its table says besides the attributes: size, constructor arguments.
KEX_API void declareType(KexType& record, TypeTable const& table);

/// The record of a host type that has a table, and schema.
template <class T>
KexType& newTableHostType(TypeTable const& table) {
  auto const record = make<TableType<T>>(table, table.base == nullptr ? nullptr : &table.base());
  declareType(*record, table);
  record->pendingRowsIs(table.rows);
  return enterHostType(record, table.fullName);
}

}  // namespace Kex
