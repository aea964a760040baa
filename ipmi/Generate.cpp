// The procedure that every descriptor runs on a supply's FRU contents.
#include "ipmi/Generate.h"

#include "host/descriptors/Generate.h"

namespace Emerson::IpmiIdentifier {

void doGenerateFdl(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor, Model const& model,
                   Kex::Ptr<Ipmi::IdpromContents> const& idpromContents) {
  Family const& family = *model.family;
  Descriptors::doGenerateFdl(descriptor,
                             {.keyField = family.keyField,
                              .rule = family.rule,
                              .keys = model.keys,
                              .keyTrace = model.keyTrace,
                              .message = model.message},
                             idpromContents, [&](Ipmi::ProductInfoArea const& fields) {
                               return family.fill(model, fields);
                             });
}

}  // namespace Emerson::IpmiIdentifier
