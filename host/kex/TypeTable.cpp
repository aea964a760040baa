// What there is to know of a type, as one table; its record and its adapter.
#include "host/kex/TypeTable.h"

namespace Kex {

void declareType(KexType& record, TypeTable const& table) {
  record.sizeIs(table.size);
  record.isEntityIs(table.isEntity);
  record.hasGenericIfSupportIs(true);
  for (auto const& argument : table.constructorArguments) {
    record.constructorArgNameQEnq(argument.name);
    record.constructorArgTypeQEnq(argument.type);
  }
}

}  // namespace Kex
