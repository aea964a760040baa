// One row an attribute: what is declared of it, and how a request to it is carried out.
#include "host/tables/AttrRow.h"

#include <algorithm>

namespace Kex {

namespace {

GenericIf::List_ const& listOf(GenericIf const* list) {
  auto const* const found = dynamic_cast<GenericIf::List_ const*>(list);
  if (found == nullptr) {
    GenericIf::throwTypeException("Kex::GenericIf::List_");
  }
  return *found;
}

KexAttrIntrospectionFlags introspectionFlags(AttrRow const& row) {
  KexAttrIntrospectionFlags flags(0);
  flags.isFunctionIs(row.introspection == AttrRow::Introspection::function);
  flags.isIndependentDomainAttrIs(row.introspection ==
                                  AttrRow::Introspection::independentDomainAttr);
  return flags;
}

}  // namespace

AttrRow const* dispatchedRow(std::span<AttrRow const> rows, AttributeId id) {
  auto const found = std::ranges::find_if(rows, [&](AttrRow const& row) {
    return row.id == id && row.use != AttrRow::Use::declaredOnly;
  });
  return found == rows.end() ? nullptr : &*found;
}

void inheritAttributes(KexType& record) {
  if (record.base() == nullptr) {
    return;
  }
  for (auto const& attribute : record.base()->attributeQ()) {
    record.attributeQEnq(attribute->copyFor(record));
  }
}

void declareRows(KexType& record, std::span<AttrRow const> rows) {
  for (AttrRow const& row : rows) {
    if (row.use != AttrRow::Use::dispatchedOnly) {
      declareRow(record, row);
    }
  }
}

KexAttr& declareRow(KexType& record, AttrRow const& row) {
  bool const isWithArguments = row.arguments.front() != nullptr;
  if (!isWithArguments) {
    return record.defNoninstantiatingAttr(
        row.name, row.valueType(), row.access.keyType != nullptr ? &row.access.keyType() : nullptr,
        row.flags, introspectionFlags(row), row.id);
  }
  record.attrDel(row.name);
  Ptr<KexAttr> const attribute =
      record.attrIs(row.name, row.valueType(), KexAttrLink(), KexAttrLink(), row.flags, row.id);
  for (std::size_t i = 0; i < row.arguments.size() && row.arguments[i] != nullptr; ++i) {
    attribute->argumentQEnq({row.arguments[i], Name(row.access.argumentTypes[i]().fullName())});
  }
  attribute->introspectionFlagsIs(introspectionFlags(row));
  record.attributeQEnq(attribute);
  return *attribute;
}

ArgumentReader::ArgumentReader(GenericIf const* list) : list_(listOf(list)) {}

void ArgumentReader::end(Name const& owner) const {
  if (next_ < list_.elements().size()) {
    GenericIf::throwUnknownArgException(owner);
  }
}

GenericIf const* ArgumentReader::nextElement() {
  return next_ < list_.elements().size() ? list_.elements()[next_++].ptr() : nullptr;
}

}  // namespace Kex
