// The procedure that every descriptor runs on a supply's FRU contents.
#pragma once

#include "host/ipmi/IdpromContents.h"
#include "host/ipmi/SupportedPowerSupplyDescriptorBase.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

/// Runs the procedure for `model`'s row: see `Descriptors::doGenerateFdl`.
void doGenerateFdl(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor, Model const& model,
                   Kex::Ptr<Ipmi::IdpromContents> const& idpromContents);

}  // namespace Emerson::IpmiIdentifier
