// One row an attribute: what is declared of it, and how a request to it is carried out.
#include "host/tables/AttrRow.h"

#include <algorithm>

namespace Tables {

namespace {

Kex::KexAttrIntrospectionFlags introspectionFlags(AttrRow const& row) {
  Kex::KexAttrIntrospectionFlags flags(0);
  flags.isFunctionIs(row.introspection == AttrRow::Introspection::function);
  flags.isIndependentDomainAttrIs(row.introspection ==
                                  AttrRow::Introspection::independentDomainAttr);
  return flags;
}

Kex::KexAttr& declared(Kex::KexType& record, AttrRow const& row) {
  if (row.access.arguments.front().name == nullptr) {
    return record.defNoninstantiatingAttr(
        row.name, row.valueType(), row.access.keyType != nullptr ? &row.access.keyType() : nullptr,
        row.flags, introspectionFlags(row), row.id);
  }
  record.attrDel(row.name);
  Kex::Ptr<Kex::KexAttr> const attribute = record.attrIs(
      row.name, row.valueType(), Kex::KexAttrLink(), Kex::KexAttrLink(), row.flags, row.id);
  for (AttrAccess::Argument const& argument : row.access.arguments) {
    if (argument.name != nullptr) {
      attribute->argumentQEnq({argument.name, Kex::Name(argument.type().fullName())});
    }
  }
  attribute->introspectionFlagsIs(introspectionFlags(row));
  record.attributeQEnq(attribute);
  return *attribute;
}

}  // namespace

AttrRow const* dispatchedRow(std::span<AttrRow const> rows, Kex::AttributeId id) {
  auto const found = std::ranges::find_if(rows, [&](AttrRow const& row) {
    return row.id == id && row.use != AttrRow::Use::declaredOnly;
  });
  return found == rows.end() ? nullptr : &*found;
}

void declareAttributes(Kex::KexType& record, Kex::KexType const* base,
                       std::span<AttrRow const> rows, void (*told)(Kex::KexAttr& attribute)) {
  auto const tell = [told](Kex::KexAttr& attribute) {
    if (told != nullptr) {
      told(attribute);
    }
  };
  if (base != nullptr) {
    for (auto const& attribute : base->attributeQ()) {
      Kex::Ptr<Kex::KexAttr> const copy = attribute->copyFor(record);
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

}  // namespace Tables
