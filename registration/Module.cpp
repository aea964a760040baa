// A module's types: their records, the declaration of their schemas, their registration.
#include "registration/Module.h"

#include "host/kex/type/Introspection.h"

namespace Emerson::Registration {

using Kex::IntrospectionReactor;
using Tables::AttrRow;

void Module::define() {
  IntrospectionReactor& reactor = IntrospectionReactor::global();
  if (isDefined_ || !reactor.isActive()) {
    return;
  }
  isDefined_ = true;
  for (RecordFn const record : fetchOrder_) {
    record();
  }
  reactor.handleNameSpace("Emerson");
  reactor.handleNameSpace(nameSpace_);
  for (ModuleType const& type : types_) {
    declare(type);
  }
  reactor.handleScopeExit();
  reactor.handleScopeExit();
}

void Module::declare(ModuleType const& type) const {
  IntrospectionReactor& reactor = IntrospectionReactor::global();
  Kex::KexType& record = type.record();
  Kex::KexType* const base = type.table->baseRecord();
  reactor.handleType(record, base);
  Tables::declareType(record, *type.table);
  Tables::declareAttributes(record, base, type.table->rows, [](Kex::KexAttr& attribute) {
    IntrospectionReactor::global().handleAttr(attribute);
    IntrospectionReactor::global().handleAttrContextExit();
  });
  reactor.handleScopeExit();
}

void Module::load() {
  for (ModuleType const& type : types_) {
    Kex::KexType& record = type.record();
    Kex::KexType::typeNodeIs(record, type.table->fullName);
    std::size_t next = 0;
    for (AttrRow const& row : type.table->rows) {
      if (row.isDeclared()) {
        type.handles[next++] = record.attr(Kex::Name(row.name));
      }
    }
  }
  define();
}

void makeRecord(Module& module, Tables::TypeTable const& table, Kex::KexType*& record) {
  module.define();
  // The pass fetches every record, this one included, unless no reactor is active.
  if (record == nullptr) {
    record = &Tables::newRecord<Tables::TableType>(table);
  }
}

}  // namespace Emerson::Registration
