// The procedure that every descriptor runs on a supply's FRU contents.
#pragma once

#include <ostream>

#include "host/descriptors/Recognition.h"
#include "host/ipmi/IdpromContents.h"
#include "host/ipmi/SupportedPowerSupplyDescriptorBase.h"
#include "host/kex/trace/Trace.h"

namespace Descriptors {

/// The handle "EmersonIpmiIdentifier", made on first use and kept until the library is unloaded.
/// Level 0 tells which type examines a supply, level 1 the key that it read.
inline Kex::TraceHandle& traceHandle() {
  static Kex::TraceHandle handle("EmersonIpmiIdentifier", false);
  return handle;
}

/// What traces call the procedure; the name that the compiler gives a template has its arguments.
inline constexpr char const* kProcedure = "doGenerateFdl";

/// Decides whether the supply that `idpromContents` describes is one that `model` recognises and
/// sets both outputs of `descriptor`: the FDL that `fill` makes of the supply's fields, then
/// managed; or not managed, then the empty FDL. `idpromContents` must be there and have product
/// info, else the range exception "null ValidPtr" is thrown.
template <class Fill>
void doGenerateFdl(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor, Recognition const& model,
                   Kex::Ptr<Ipmi::IdpromContents> const& idpromContents, Fill const& fill) {
  Ipmi::IdpromContents const& idprom = *idpromContents;
  if (!model.message.empty()) {
    Kex::trace(
        traceHandle(), 0, [message = model.message](std::ostream& out) { out << message; },
        __builtin_LINE(), kProcedure);
  }

  Ipmi::ProductInfoArea const& fields = *idprom.productInfo();
  std::string_view const key = model.keyOf(fields);
  switch (model.keyTrace) {
    case KeyTrace::none: break;
    case KeyTrace::key:
      Kex::trace(
          traceHandle(), 1, [key](std::ostream& out) { out << "pName=" << key; }, __builtin_LINE(),
          kProcedure);
      break;
    case KeyTrace::keyAndLength:
      Kex::trace(
          traceHandle(), 1,
          [key](std::ostream& out) { out << "pName=" << key << "; strlen pName=" << key.size(); },
          __builtin_LINE(), kProcedure);
      break;
  }

  if (!model.accepts(key)) {
    descriptor.managedIs(false);
    descriptor.fdlIs({});
    return;
  }
  descriptor.fdlIs(fill(fields));
  descriptor.managedIs(true);
}

}  // namespace Descriptors
