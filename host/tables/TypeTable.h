// What there is to know of a type, as one table; its record and its adapter.
#pragma once

#include <span>

#include "host/kex/entity/Entity.h"
#include "host/kex/generic/GenericIf.h"
#include "host/kex/type/KexType.h"
#include "host/tables/AttrRow.h"

namespace Tables {

/// Name and type name of a constructor argument.
struct ConstructorArgument {
  char const* name;
  char const* type;
};

/// All that the framework needs to know of a type.
struct TypeTable {
  char const* shortName;
  char const* fullName;
  RecordFn base;
  std::size_t size;
  bool isEntity;
  std::span<ConstructorArgument const> constructorArguments;
  std::span<AttrRow const> rows;
  /// The generic construction from a name; null where the type has none.
  Kex::Ptr<Kex::PtrInterface> (*create)(Kex::Name name) = nullptr;

  /// Null for a root.
  Kex::KexType* baseRecord() const { return base == nullptr ? nullptr : &base(); }
};

/// The record of a type that has a table. One class serves all types: what they differ in stands in
/// their tables.
class TableType : public Kex::KexType {
 public:
  /// `table` must live as long as the process.
  TableType(TypeTable const& table, Kex::KexType* base)
      : Kex::KexType(table.shortName, nullptr, base, Kex::TypeFlags{}), table_(table) {}
  ~TableType() override;

  /// Creates an object from its name, where the table has a way to.
  Kex::Ptr<Kex::GenericIf> genericIf(Kex::GenericIf const* arguments, bool isConst) const override;
  /// An adapter that carries requests out by the table's rows, else as the base's does.
  Kex::Ptr<Kex::GenericIf> newAdapter(Kex::Ptr<Kex::PtrInterface> const& object,
                                      bool isConst) const override;

 protected:
  TypeTable const& table() const { return table_; }

 private:
  TypeTable const& table_;
};

/// Declares to `record` what its table says besides the attributes: size, constructor arguments.
void declareType(Kex::KexType& record, TypeTable const& table);

/// A record for the type that `table` is about, known to its base and never destroyed.
template <class Record>
Record& newRecord(TypeTable const& table) {
  Kex::KexType* const base = table.baseRecord();
  auto const record = Kex::make<Record>(table, base);
  record->isNondestructingIs(true);
  if (base != nullptr) {
    base->derivedTypeQEnq(*record);
  }
  return *record;
}

/// The record of a host type: entered in the type tree, its schema there when it is asked for.
Kex::KexType& newTableHostType(TypeTable const& table);

/// Constructor arguments of an entity that is made from its name alone.
inline constexpr ConstructorArgument kNamedEntityArguments[] = {{"name", "Kex::Name"}};

}  // namespace Tables
