// The elements of an argument list, taken one by one.
#include "host/tables/ArgumentReader.h"

namespace Kex {

namespace {

GenericIf::List_ const& listOf(GenericIf const* list) {
  auto const* const found = dynamic_cast<GenericIf::List_ const*>(list);
  if (found == nullptr) {
    GenericIf::throwTypeException("Kex::GenericIf::List_");
  }
  return *found;
}

}  // namespace

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
