// What is told of a supply: the JSON object, the lines for people, the exit status.
#include "agent/report/Report.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "agent/base/Text.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

using Ipmi::ProductInfoArea;
using Kex::String8;

/// One field of a product info area that is told of.
struct Field {
  ProductInfoArea::Field field;
  char const* jsonName;
  /// Whether descriptors write it into the FDL.
  bool isWritten;

  std::string_view text(ProductInfoArea const& area) const { return area.field(field).text.view(); }
};

constexpr Field kFields[] = {
    {ProductInfoArea::kManufacturerName, "manufacturerName", true},
    {ProductInfoArea::kProductName, "productName", false},
    {ProductInfoArea::kPartNumber, "partNumber", false},
    {ProductInfoArea::kProductVersion, "productVersion", true},
    {ProductInfoArea::kSerialNumber, "serialNumber", true},
};

std::string_view upToNul(std::string_view text) { return text.substr(0, text.find('\0')); }

Json textOrNull(std::string_view text) { return text.empty() ? Json() : Json(latin1ToUtf8(text)); }

Json textOrNull(std::optional<String8> const& text) {
  return text ? Json(latin1ToUtf8(text->view())) : Json();
}

bool changesMeaning(std::string_view text) {
  using namespace std::string_view_literals;
  return text.find_first_of("'\"\\\n\r\0"sv) != std::string_view::npos;
}

std::string orDash(std::string_view text) { return text.empty() ? "-" : escaped(text); }

}  // namespace

Json supplyJson(Supply const& supply) {
  Json json;
  json["verdict"] = verdictName(supply.verdict);
  json["reason"] = textOrNull(supply.reason.view());
  json["mfrId"] = supply.mfrId ? Json(latin1ToUtf8(upToNul(supply.mfrId->view()))) : Json();
  json["descriptor"] = textOrNull(supply.descriptor);
  for (Field const& field : kFields) {
    json[field.jsonName] =
        supply.product ? Json(latin1ToUtf8(field.text(*supply.product))) : Json();
  }
  json["hwError"] = supply.hwError ? Json(*supply.hwError) : Json();
  json["suspect"] = Json::array();
  for (Suspect const& suspect : suspects(supply)) {
    json["suspect"].push_back(suspect.field);
  }
  json["transactions"] = supply.transactions;
  json["fdl"] = textOrNull(supply.fdl.view());
  return json;
}

std::vector<Suspect> suspects(Supply const& supply) {
  std::vector<Suspect> found;
  if (!supply.product || supply.fdl.empty()) {
    return found;
  }
  for (Field const& field : kFields) {
    std::string_view const text = field.text(*supply.product);
    bool const isInFdl =
        field.isWritten && supply.fdl.view().find(upToNul(text)) != std::string_view::npos;
    if (isInFdl && changesMeaning(text)) {
      found.push_back({.field = field.jsonName, .text = std::string(text)});
    }
  }
  return found;
}

std::string explanation(Supply const& supply) {
  std::string const reason = escaped(supply.reason.view());
  std::string read;
  auto const add = [&](std::string_view title, std::string_view text) {
    bool const isTold = reason.find('"' + escaped(text)) != std::string::npos;
    if (!text.empty() && !isTold) {
      read += (read.empty() ? " (" : ", ") + std::string(title) + ' ' + inQuotes(text);
    }
  };
  if (supply.mfrId) {
    add("MFR_ID", upToNul(supply.mfrId->view()));
  }
  if (supply.product) {
    for (Field const& field : kFields) {
      add(ProductInfoArea::kFieldNames[field.field], field.text(*supply.product));
    }
  }
  return verdictName(supply.verdict) + (": " + reason) + read + (read.empty() ? "" : ")");
}

std::string supplyLine(double time, std::string const& slot, Supply const& supply) {
  std::string line(Kex::format("%.3f ", time).view());
  line += slot + ' ' + verdictName(supply.verdict) + ' ';
  if (supply.verdict != Verdict::identified) {
    return line + orDash(supply.reason.view());
  }
  std::string_view const serial =
      supply.product ? supply.product->serialNumber().view() : std::string_view();
  return line + orDash(supply.descriptor.value_or("").view()) + ' ' + orDash(serial);
}

Status statusOf(Supply const& supply) {
  using namespace Hardware::PowerSupplySlot;
  VerdictRow const& row = rowOf(supply.verdict);
  if (row.stage == Stage::end) {
    return Status::ok;
  }
  return row.proof == Proof::isEmpty ? Status::absent : Status::notIdentified;
}

}  // namespace Agent
