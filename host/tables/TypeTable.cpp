// What there is to know of a type, as one table; its record and its adapter.
#include "host/tables/TypeTable.h"

namespace Kex {

namespace {

/// The adapter of an object whose type has a table; `Base` is that of all objects of its kind.
template <class Base>
class TableAdapter final : public Base {
 public:
  TableAdapter(TypeTable const& table, Ptr<PtrInterface> const& object, bool isConst)
      : Base(object, isConst), table_(table) {}

  // The first record of the cast chain is the type's own.
  KexType const& type() const override { return table_.castChain.front()(); }

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
  Ptr<GenericIf> base() const { return this->baseGenericIf(type()); }

  TypeTable const& table_;
};

/// The record of a host type: it declares its schema by itself.
class HostTableType final : public TableType {
 public:
  using TableType::TableType;

 private:
  void declareAttributes() override {
    inheritAttributes(*this);
    declareRows(*this, table().rows);
  }
};

}  // namespace

TableType::~TableType() = default;

Ptr<GenericIf> TableType::genericIf(GenericIf const* arguments, bool isConst) const {
  if (table_.create == nullptr) {
    return KexType::genericIf(arguments, isConst);
  }
  ArgumentReader reader(arguments);
  auto name = reader.next<Name>("name");
  reader.end(table_.shortName);
  return KexType::genericIf(table_.create(std::move(name)), false);
}

Ptr<GenericIf> TableType::newAdapter(Ptr<PtrInterface> const& object, bool isConst) const {
  if (table_.isEntity) {
    return make<TableAdapter<GenericIfEntity>>(table_, object, isConst);
  }
  return make<TableAdapter<GenericIfPtrInterface>>(table_, object, isConst);
}

void declareType(KexType& record, TypeTable const& table) {
  record.sizeIs(table.size);
  record.isEntityIs(table.isEntity);
  record.hasGenericIfSupportIs(true);
  for (auto const& argument : table.constructorArguments) {
    record.constructorArgNameQEnq(argument.name);
    record.constructorArgTypeQEnq(argument.type);
  }
}

KexType& newTableHostType(TypeTable const& table) {
  auto const record = make<HostTableType>(table, table.base == nullptr ? nullptr : &table.base());
  declareType(*record, table);
  return enterHostType(record, table.fullName);
}

}  // namespace Kex
