// A module's types: their records, the declaration of their schemas, their registration.
#include "registration/Module.h"

#include "host/kex/type/Introspection.h"

namespace Emerson::Registration {

using Kex::AttrRow;
using Kex::IntrospectionReactor;

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
  reactor.handleType(record, record.base());
  Kex::declareType(record, *type.table);
  Kex::declareAttributes(record, type.table->rows, [](Kex::KexAttr& attribute) {
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

void makeRecord(Module& module, Kex::TypeTable const& table, Kex::KexType*& record) {
  module.define();
  // The pass fetches every record, this one included, unless no reactor is active.
  if (record == nullptr) {
    Kex::KexType& base = table.base();
    record = new Kex::TableType(table, &base);
    record->isNondestructingIs(true);
    base.derivedTypeQEnq(*record);
  }
}

}  // namespace Emerson::Registration
