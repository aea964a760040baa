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

bool changesMeaning(std::string_view text) {
  using namespace std::string_view_literals;
  return text.find_first_of("'\"\\\n\r\0"sv) != std::string_view::npos;
}

std::string orDash(std::string_view text) { return text.empty() ? "-" : escaped(text); }

}  // namespace

JsonObject& addSupply(JsonObject& object, Supply const& supply) {
  std::vector<std::string_view> suspectFields;
  for (Suspect const& suspect : suspects(supply)) {
    suspectFields.emplace_back(suspect.field);
  }
  auto const latin1 = [](std::string_view bytes) { return std::optional(Latin1{bytes}); };
  object.add("verdict", verdictName(supply.verdict))
      .add("reason", orNull(supply.reason.view()))
      .add("mfrId", supply.mfrId ? latin1(upToNul(supply.mfrId->view())) : std::nullopt)
      .add("descriptor", supply.descriptor ? latin1(supply.descriptor->view()) : std::nullopt);
  for (Field const& field : kFields) {
    object.add(field.jsonName, supply.product ? latin1(field.text(*supply.product)) : std::nullopt);
  }
  return object.add("hwError", supply.hwError)
      .add("suspect", suspectFields)
      .add("transactions", supply.transactions)
      .add("fdl", orNull(supply.fdl.view()));
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
