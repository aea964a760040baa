// What there is to know of a type, as one table; its record and its adapter.
#include "host/tables/TypeTable.h"

#include "host/tables/ArgumentReader.h"

namespace Tables {

namespace {

/// The adapter of an object whose type has a table; `Base` is that of all objects of its kind.
template <class Base>
class TableAdapter final : public Base {
 public:
  TableAdapter(TypeTable const& table, Kex::KexType const& type,
               Kex::Ptr<Kex::PtrInterface> const& object, bool isConst)
      : Base(object, isConst), table_(table), type_(type) {}

  Kex::KexType const& type() const override { return type_; }

  Kex::Ptr<Kex::PtrInterface> castTo(Kex::KexType const& wanted) const override {
    if (!type_.isA(wanted)) {
      Kex::GenericIf::throwTypeException(table_.shortName);
    }
    return this->object();
  }

  Kex::KexAttr const* attribute(Kex::Name const& name) const override {
    Kex::KexAttr const* const own = type_.attr(name);
    return own != nullptr ? own : base()->attribute(name);
  }

  Kex::Ptr<Kex::GenericIf> doAccess(Kex::AttributeRequest const& request) const override {
    if (request.code >= 128 && this->isConst()) {
      Kex::GenericIf::throwConstException("attempting to modify a const instance");
    }
    AttrRow const* const row = dispatchedRow(table_.rows, request.id);
    return row != nullptr ? row->access.carryOut(*row, *this->object(), request)
                          : base()->doAccess(request);
  }

  Kex::Ptr<Kex::GenericIterator> iterator(Kex::AttributeId id) const override {
    AttrRow const* const row = dispatchedRow(table_.rows, id);
    return row != nullptr && row->access.iterator != nullptr ? row->access.iterator(*this->object())
                                                             : base()->iterator(id);
  }

 private:
  Kex::Ptr<Kex::GenericIf> base() const { return this->baseGenericIf(type_); }

  TypeTable const& table_;
  Kex::KexType const& type_;
};

/// The record of a host type: it declares its schema by itself.
class HostTableType final : public TableType {
 public:
  using TableType::TableType;

 private:
  void declareAttributes() override {
    Tables::declareAttributes(*this, table().baseRecord(), table().rows);
  }
};

}  // namespace

TableType::~TableType() = default;

Kex::Ptr<Kex::GenericIf> TableType::genericIf(Kex::GenericIf const* arguments, bool isConst) const {
  if (table_.create == nullptr) {
    return Kex::KexType::genericIf(arguments, isConst);
  }
  ArgumentReader reader(arguments);
  auto name = reader.next<Kex::Name>("name");
  reader.end(table_.shortName);
  return Kex::KexType::genericIf(table_.create(std::move(name)), false);
}

Kex::Ptr<Kex::GenericIf> TableType::newAdapter(Kex::Ptr<Kex::PtrInterface> const& object,
                                               bool isConst) const {
  if (table_.isEntity) {
    return Kex::make<TableAdapter<Kex::GenericIfEntity>>(table_, *this, object, isConst);
  }
  return Kex::make<TableAdapter<Kex::GenericIfPtrInterface>>(table_, *this, object, isConst);
}

void declareType(Kex::KexType& record, TypeTable const& table) {
  record.sizeIs(table.size);
  record.isEntityIs(table.isEntity);
  record.hasGenericIfSupportIs(true);
  for (auto const& argument : table.constructorArguments) {
    record.constructorArgNameQEnq(argument.name);
    record.constructorArgTypeQEnq(argument.type);
  }
}

Kex::KexType& newTableHostType(TypeTable const& table) {
  Kex::KexType& record = newRecord<HostTableType>(table);
  declareType(record, table);
  Kex::KexType::typeNodeIs(record, table.fullName);
  return record;
}

}  // namespace Tables
