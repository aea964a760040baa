// The table of all supported models, and what must hold of it, asserted at compile time.
#include "ipmi/Models.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "ipmi/families/All.h"
#include "ipmi/model/RowChecks.h"

namespace Emerson::IpmiIdentifier {
namespace {

template <std::size_t... kSizes>
consteval auto joined(Model const (&... parts)[kSizes]) {
  std::array<Model, (kSizes + ...)> all{};
  auto next = all.begin();
  ((next = std::copy(parts, parts + kSizes, next)), ...);
  return all;
}

}  // namespace

constexpr std::array<Model, kModelCount> kModels =
    joined(kDs3000Models, kDs2700Models, kDs2900Models, kEmerson760Models, kDs460Models,
           kDs500Models, kDs750Models, kDs1100Models, kDs1600Models);

namespace {

using namespace RowChecks;

static_assert(inDeclaredOrder(kModels), "the rows stand in the order of the list of types");
static_assert(keysReachable(kModels), "each row has a key, and each key a text that it accepts");
static_assert(keysUnique(kModels), "no text is accepted by two keys of one field");
static_assert(keysHaveTheirFamilysLength(kModels),
              "a key has one of the lengths that its family's have");
static_assert(columnsAreThoseOfTheTemplates(kModels),
              "a row has the columns that its family's template asks for, and no other one");
static_assert(reversedNamesBlowBackToFront(kModels), "the airflow is the one that the name says");

}  // namespace

}  // namespace Emerson::IpmiIdentifier
