// What there is to know of a type, as one table; its record and its adapter.
#pragma once

#include <span>

#include "host/kex/entity/Entity.h"
#include "host/kex/generic/GenericIf.h"
#include "host/kex/type/KexType.h"
#include "host/tables/AttrRow.h"

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

/// The record of a type that has a table. One class serves all types: what they differ in stands in
/// their tables.
class KEX_API TableType : public KexType {
 public:
  /// `table` must live as long as the process.
  TableType(TypeTable const& table, KexType* base)
      : KexType(table.shortName, nullptr, base, TypeFlags{}), table_(table) {}
  ~TableType() override;

  /// Creates an object from its name, where the table has a way to.
  Ptr<GenericIf> genericIf(GenericIf const* arguments, bool isConst) const override;
  /// An adapter that carries requests out by the table's rows, else as the base's does.
  Ptr<GenericIf> newAdapter(Ptr<PtrInterface> const& object, bool isConst) const override;

 protected:
  TypeTable const& table() const { return table_; }

 private:
  TypeTable const& table_;
};

/// Declares to `record` what its table says besides the attributes: size, constructor arguments.
KEX_API void declareType(KexType& record, TypeTable const& table);

/// The record of a host type that has a table, and schema.
KEX_API KexType& newTableHostType(TypeTable const& table);

}  // namespace Kex
