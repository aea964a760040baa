// The types of the module EmersonIpmiIdentifier: the descriptors.
#include <algorithm>
#include <array>

#include "host/descriptors/Generate.h"
#include "host/tables/Access.h"
#include "host/tables/TypeTable.h"
#include "ipmi/Descriptors.h"
#include "ipmi/families/All.h"
#include "registration/Module.h"

namespace Emerson::IpmiIdentifier {

namespace {

using Base = Ipmi::SupportedPowerSupplyDescriptorBase;
using Registration::ModuleType;
using Registration::RecordFn;
using Tables::AttrRow;

constexpr AttrRow kRows[] = {
    {.name = "doGenerateFdl",
     .id = 0x102,
     .access = Tables::function<&Base::doGenerateFdl>({"idpromContents"}),
     .introspection = AttrRow::Introspection::function,
     .flags = {0x20001, 0x400}},
};

template <class T, auto Factory>
constexpr Tables::TypeTable tableOf(char const* shortName, char const* fullName) {
  return {.shortName = shortName,
          .fullName = fullName,
          .base = &Base::_fwkType,
          .size = sizeof(T),
          .isEntity = true,
          .constructorArguments = Tables::kNamedEntityArguments,
          .rows = kRows,
          .create = [](Kex::Name name) -> Kex::Ptr<Kex::PtrInterface> {
            return Factory(std::move(name));
          }};
}

constexpr Tables::TypeTable kTables[] = {
#define EMERSON_TABLE(type, stem) \
  tableOf<type, &stem##Factory>(#type, "Emerson::IpmiIdentifier::" #type),
    EMERSON_DESCRIPTOR_TYPES(EMERSON_TABLE)
#undef EMERSON_TABLE
};

constinit std::array<std::array<Kex::KexAttr*, std::size(kRows)>, kModelCount> handles{};

constexpr std::array<RecordFn, kModelCount> kRecords = {
#define EMERSON_RECORD(type, stem) &type::_fwkType,
    EMERSON_DESCRIPTOR_TYPES(EMERSON_RECORD)
#undef EMERSON_RECORD
};

constexpr auto kTypes = [] {
  std::array<ModuleType, kModelCount> types{};
  for (std::size_t i = 0; i < types.size(); ++i) {
    types[i] = {.table = &kTables[i], .record = kRecords[i], .handles = handles[i]};
  }
  return types;
}();

/// The types by short name, then their base.
constexpr auto kFetchOrder = [] {
  std::array<std::size_t, kModelCount> indices{};
  for (std::size_t i = 0; i < indices.size(); ++i) {
    indices[i] = i;
  }
  std::ranges::sort(indices, {}, [](std::size_t i) { return kTypeNames[i]; });
  std::array<RecordFn, kModelCount + 1> order{};
  std::ranges::transform(indices, order.begin(), [](std::size_t i) { return kRecords[i]; });
  order.back() = &Base::_fwkType;
  return order;
}();

constinit Registration::Module module("IpmiIdentifier", kTypes, kFetchOrder);

/// Runs when the library is loaded. The trace handle is made as well, for a host to list.
[[maybe_unused]] bool const isLoaded = (module.load(), Descriptors::traceHandle(), true);

}  // namespace

// The templates are built behind the registration, since they stand behind it in this file.
Kex::String8 const ds1100FdlTemplate = kDs1100FdlText;
Kex::String8 const ds1600FdlTemplate = kDs1600FdlText;
Kex::String8 const ds2700FdlTemplate = kDs2700FdlText;
Kex::String8 const ds3000FdlTemplate = kDs3000FdlText;
Kex::String8 const ds460FdlTemplate = kDs460FdlText;
Kex::String8 const ds500FdlTemplate = kDs500FdlText;
Kex::String8 const ds750FdlTemplate = kDs750FdlText;

#define EMERSON_FWK_TYPE(type, stem)                                                               \
  Kex::KexType& type::_fwkType() {                                                                 \
    return Registration::recordOf<type>(module, kTables[static_cast<std::size_t>(ModelId::type)]); \
  }
EMERSON_DESCRIPTOR_TYPES(EMERSON_FWK_TYPE)
#undef EMERSON_FWK_TYPE

}  // namespace Emerson::IpmiIdentifier
