// The procedure that every descriptor runs on a supply's FRU contents.
#include "ipmi/Generate.h"

#include <algorithm>
#include <ostream>
#include <string_view>

#include "ipmi/Trace.h"
#include "ipmi/Trim.h"

namespace Emerson::IpmiIdentifier {
namespace {

std::string_view keyOf(KeyField field, Ipmi::ProductInfoArea const& fields) {
  return (field == KeyField::partNumber ? fields.partNumber() : fields.productName()).view();
}

bool matches(MatchRule rule, std::string_view key, std::string_view accepted) {
  if (accepted.empty()) {
    return false;
  }
  return rule == MatchRule::prefix ? key.starts_with(accepted) : key == accepted;
}

}  // namespace

void doGenerateFdl(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor, Model const& model,
                   Kex::Ptr<Ipmi::IdpromContents> const& idpromContents) {
  Ipmi::IdpromContents const& idprom = *idpromContents;
  auto const& family = *model.family;
  if (*model.message != '\0') {
    Kex::trace(traceHandle(), 0, [&](std::ostream& out) { out << model.message; });
  }

  auto const& fields = *idprom.productInfo();
  auto key = keyOf(family.keyField, fields);
  if (family.rule == MatchRule::trimmedEquality) {
    key = trimmed(key);
  }
  switch (model.keyTrace) {
    case KeyTrace::none: break;
    case KeyTrace::key:
      Kex::trace(traceHandle(), 1, [&](std::ostream& out) { out << "pName=" << key; });
      break;
    case KeyTrace::keyAndLength:
      Kex::trace(traceHandle(), 1, [&](std::ostream& out) {
        out << "pName=" << key << "; strlen pName=" << key.size();
      });
      break;
  }

  if (std::ranges::none_of(model.keys, [&](std::string_view accepted) {
        return matches(family.rule, key, accepted);
      })) {
    descriptor.managedIs(false);
    descriptor.fdlIs({});
    return;
  }
  descriptor.fdlIs(family.fill(model, fields));
  descriptor.managedIs(true);
}

}  // namespace Emerson::IpmiIdentifier
