// The elements of an argument list, taken one by one.
#include "host/tables/ArgumentReader.h"

namespace Tables {

namespace {

Kex::GenericIf::List_ const& listOf(Kex::GenericIf const* list) {
  auto const* const found = dynamic_cast<Kex::GenericIf::List_ const*>(list);
  if (found == nullptr) {
    Kex::GenericIf::throwTypeException("Kex::GenericIf::List_");
  }
  return *found;
}

}  // namespace

ArgumentReader::ArgumentReader(Kex::GenericIf const* list) : list_(listOf(list)) {}

void ArgumentReader::end(Kex::Name const& owner) const {
  if (next_ < list_.elements().size()) {
    Kex::GenericIf::throwUnknownArgException(owner);
  }
}

Kex::GenericIf const* ArgumentReader::nextElement() {
  return next_ < list_.elements().size() ? list_.elements()[next_++].ptr() : nullptr;
}

}  // namespace Tables
