// The procedure that every descriptor runs on a supply's FRU contents.
#pragma once

#include "host/ipmi/IdpromContents.h"
#include "host/ipmi/SupportedPowerSupplyDescriptorBase.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

/// Decides whether the supply that `idpromContents` describes is one of `model`'s units and sets
/// both outputs of `descriptor`: the filled FDL, then managed; or not managed, then the empty FDL.
/// `idpromContents` must be there and have product info, else the range exception "null ValidPtr"
/// is thrown.
void doGenerateFdl(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor, Model const& model,
                   Kex::Ptr<Ipmi::IdpromContents> const& idpromContents);

}  // namespace Emerson::IpmiIdentifier
