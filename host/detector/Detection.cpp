// What one detection remembers, and how its verdicts are reached.
#include "host/detector/Detection.h"

#include <algorithm>
#include <string>
#include <utility>

#include "host/kex/base/Format.h"

namespace PowerSupplyDetector {

using Hardware::VornRequest;
using Kex::Request;
using Kex::String8;

namespace {

/// Texts join by length: what a supply wrote may hold any byte.
String8 joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (std::string_view const part : parts) {
    text += part;
  }
  return String8(text);
}

bool isShort(std::span<Kex::U8 const> block) {
  return !block.empty() && block[0] + 1U < block.size();
}

String8 outcome(char const* what, VornRequest const& request) {
  auto const block = request.received();
  if (request.status() == Request::kFailed) {
    return joined({what, " failed: ", request.failure().view()});
  }
  return Kex::format("%s was cut short: %u of %zu bytes", what, block.empty() ? 0U : block[0],
                     block.empty() ? 0 : block.size() - 1);
}

/// `text` without what fills a block behind it.
std::string_view withoutPadding(std::string_view text) {
  using namespace std::string_view_literals;
  return text.substr(0, text.find_last_not_of(" \0\xFF"sv) + 1);
}

String8 notSupported(std::optional<String8> const& mfrId) {
  return joined({"MFR_ID \"", withoutPadding(mfrId.value_or("").view()), "\" is not supported"});
}

}  // namespace

bool isLoneRead(VornRequest const& request) {
  return request.loaded() == VornRequest::Loaded::read;
}

String8 blockText(std::span<Kex::U8 const> block) {
  return String8(block.subspan(std::min<std::size_t>(1, block.size())));
}

Supply unreadable(char const* what, VornRequest const& request) {
  Supply supply;
  supply.verdict = Verdict::unreadable;
  supply.reason = outcome(what, request);
  return supply;
}

Outcome outcomeOf(Supply const& supply) {
  Outcome outcome{.verdict = supply.verdict};
  if (supply.verdict == Verdict::unrecognised && supply.product) {
    using Area = Ipmi::ProductInfoArea;
    std::string texts;
    for (Kex::U8 i = 0; i < Area::kFields; ++i) {
      texts.append(supply.product->field(static_cast<Area::Field>(i)).text.view()) += '\0';
    }
    outcome.texts = String8(texts).hash();
  } else if (supply.verdict == Verdict::unsupportedManufacturer && supply.mfrId) {
    outcome.texts = supply.mfrId->hash();
  }
  return outcome;
}

bool hasSerialNumber(String8 const& serialNum) {
  using namespace std::string_view_literals;
  return serialNum.view().find_first_not_of(" \t\0\xFF"sv) != std::string_view::npos;
}

Supply unstable(Supply found, Checked checked) {
  found.verdict = Verdict::unreadable;
  found.reason = checked == Checked::otherSerialNumber
                     ? "serial number is not stable"
                     : "the product info area's header is not stable";
  found.descriptor.reset();
  found.fdl = {};
  return found;
}

Supply judgePoll(VornRequest const& request, Findings const& findings,
                 std::optional<String8> const& mfrId) {
  Supply supply;
  if (isLoneRead(request)) {
    bool const isAnswered = request.status() != Request::kFailed;
    supply.verdict = isAnswered ? Verdict::unsupportedManufacturer
                     : Smbus::rowOf(request.error()).provesAbsence ? Verdict::absent
                                                                   : Verdict::unreachable;
    supply.reason = isAnswered ? notSupported(mfrId) : outcome("reading MFR_ID", request);
  } else if (request.status() == Request::kFailed || isShort(request.received())) {
    supply = unreadable("reading the FRU common header", request);
  } else {
    supply.verdict = Verdict::invalidHeader;
    // No header was judged when the table of manufacturers changed during the poll.
    supply.reason = findings.headerFault.empty() ? notSupported(mfrId) : findings.headerFault;
  }
  supply.mfrId = mfrId;
  return supply;
}

Supply judgeIdentification(Findings findings, bool hwError, String8 const& fdl) {
  Supply supply;
  supply.hwError = hwError;
  supply.product = std::move(findings.product);
  if (hwError || !findings.hasArea) {
    supply.verdict = hwError ? Verdict::invalidChecksum : Verdict::unsupportedVersion;
    // No fault is there when somebody else has set what the verdict follows from.
    supply.reason = findings.areaFault.empty() ? "the product info area was withdrawn"
                                               : std::move(findings.areaFault);
  } else if (fdl.empty()) {
    supply.verdict = Verdict::unrecognised;
    auto const text = [&](Ipmi::ProductInfoArea::Field field) {
      return supply.product ? supply.product->field(field).text.view() : std::string_view();
    };
    supply.reason =
        joined({"no descriptor knows product name \"", text(Ipmi::ProductInfoArea::kProductName),
                "\", part number \"", text(Ipmi::ProductInfoArea::kPartNumber), "\""});
  } else {
    supply.verdict = Verdict::identified;
    supply.fdl = fdl;
  }
  return supply;
}

}  // namespace PowerSupplyDetector
