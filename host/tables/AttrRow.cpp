// One row an attribute: what is declared of it, and how a request to it is carried out.
#include "host/tables/AttrRow.h"

#include <algorithm>

namespace Kex {

namespace {

KexAttrIntrospectionFlags introspectionFlags(AttrRow const& row) {
  KexAttrIntrospectionFlags flags(0);
  flags.isFunctionIs(row.introspection == AttrRow::Introspection::function);
  flags.isIndependentDomainAttrIs(row.introspection ==
                                  AttrRow::Introspection::independentDomainAttr);
  return flags;
}

KexAttr& declared(KexType& record, AttrRow const& row) {
  if (row.access.arguments.front().name == nullptr) {
    return record.defNoninstantiatingAttr(
        row.name, row.valueType(), row.access.keyType != nullptr ? &row.access.keyType() : nullptr,
        row.flags, introspectionFlags(row), row.id);
  }
  record.attrDel(row.name);
  Ptr<KexAttr> const attribute =
      record.attrIs(row.name, row.valueType(), KexAttrLink(), KexAttrLink(), row.flags, row.id);
  for (AttrAccess::Argument const& argument : row.access.arguments) {
    if (argument.name != nullptr) {
      attribute->argumentQEnq({argument.name, Name(argument.type().fullName())});
    }
  }
  attribute->introspectionFlagsIs(introspectionFlags(row));
  record.attributeQEnq(attribute);
  return *attribute;
}

}  // namespace

AttrRow const* dispatchedRow(std::span<AttrRow const> rows, AttributeId id) {
  auto const found = std::ranges::find_if(rows, [&](AttrRow const& row) {
    return row.id == id && row.use != AttrRow::Use::declaredOnly;
  });
  return found == rows.end() ? nullptr : &*found;
}

void declareAttributes(KexType& record, std::span<AttrRow const> rows,
                       void (*told)(KexAttr& attribute)) {
  auto const tell = [told](KexAttr& attribute) {
    if (told != nullptr) {
      told(attribute);
    }
  };
  if (record.base() != nullptr) {
    for (auto const& attribute : record.base()->attributeQ()) {
      Ptr<KexAttr> const copy = attribute->copyFor(record);
      record.attributeQEnq(copy);
      tell(*copy);
    }
  }
  for (AttrRow const& row : rows) {
    if (row.isDeclared()) {
      tell(declared(record, row));
    }
  }
}

}  // namespace Kex
