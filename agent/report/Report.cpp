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

/// The MFR_ID without what fills its block.
std::string_view withoutPadding(std::string_view text) {
  text = upToNul(text);
  return text.substr(0, text.find_last_not_of(" \xFF") + 1);
}

bool changesMeaning(std::string_view text) {
  return std::ranges::any_of(text, [](char letter) {
    auto const byte = static_cast<unsigned char>(letter);
    return letter == '\'' || letter == '"' || letter == '\\' || byte < 0x20 || byte == 0x7F;
  });
}

/// Every key from `verdict` on, for a supply or, where it is null, for none.
JsonObject& add(JsonObject& object, Supply const* supply, std::optional<Latin1> reason,
                std::optional<Hint> const& hint) {
  // What `get` has of the supply, which is an `optional`.
  auto const of = [supply](auto const& get) {
    return supply == nullptr ? decltype(get(*supply))() : get(*supply);
  };
  std::vector<std::string_view> suspectFields;
  for (Suspect const& suspect : supply == nullptr ? std::vector<Suspect>() : suspects(*supply)) {
    suspectFields.emplace_back(suspect.field);
  }
  if (hint && hint->isRepaired) {
    suspectFields.emplace_back("length");
  }
  using Text = std::optional<Latin1>;
  object
      .add("verdict", of([](Supply const& one) { return std::optional(verdictName(one.verdict)); }))
      .add("reason", reason)
      .add("hint", hint ? std::optional(hint->text) : std::nullopt)
      .add("mfrId", of([](Supply const& one) {
             return one.mfrId ? Text(Latin1{upToNul(one.mfrId->view())}) : std::nullopt;
           }))
      .add("descriptor", of([](Supply const& one) {
             return one.descriptor ? Text(Latin1{one.descriptor->view()}) : std::nullopt;
           }));
  for (Field const& field : kFields) {
    object.add(field.jsonName, of([&field](Supply const& one) {
                 return one.product ? Text(Latin1{field.text(*one.product)}) : std::nullopt;
               }));
  }
  return object.add("hwError", of([](Supply const& one) { return one.hwError; }))
      .add("suspect", suspectFields)
      .add("transactions", of([](Supply const& one) { return std::optional(one.transactions); }))
      .add("fdl", of([](Supply const& one) { return orNull(one.fdl.view()); }));
}

std::string orDash(std::string_view text) { return text.empty() ? "-" : escaped(text); }

}  // namespace

JsonObject& addSupply(JsonObject& object, Supply const& supply, std::optional<Hint> const& hint) {
  return add(object, &supply, orNull(supply.reason.view()), hint);
}

JsonObject& addFailure(JsonObject& object, std::string_view reason) {
  return add(object, nullptr, orNull(reason), std::nullopt);
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

std::string explanation(Supply const& supply, std::optional<Hint> const& hint) {
  std::string const reason = escaped(supply.reason.view());
  std::string read;
  auto const add = [&](std::string_view title, std::string_view text) {
    bool const isTold = reason.find('"' + escaped(text)) != std::string::npos;
    if (!text.empty() && !isTold) {
      read += (read.empty() ? " (" : ", ") + std::string(title) + ' ' + inQuotes(text);
    }
  };
  if (supply.mfrId) {
    add("MFR_ID", withoutPadding(supply.mfrId->view()));
  }
  if (supply.product) {
    for (Field const& field : kFields) {
      add(ProductInfoArea::kFieldNames[field.field], field.text(*supply.product));
    }
  }
  std::string look = hint ? "; " + hint->text : "";
  look += hint && hint->length ? ": identify --repair takes it" : "";
  return verdictName(supply.verdict) + (": " + reason) + look + read + (read.empty() ? "" : ")");
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

std::string_view assigned(Supply const& supply, std::string_view name) {
  std::string const start = '\n' + std::string(name) + " = ";
  std::string_view const fdl = supply.fdl.view();
  std::size_t const found = fdl.find(start);
  if (found == std::string_view::npos) {
    return {};
  }
  std::string_view value = fdl.substr(found + start.size());
  value = value.substr(0, value.find('\n'));
  bool const isQuoted = value.size() > 1 && value.front() == '\'' && value.back() == '\'';
  return isQuoted ? value.substr(1, value.size() - 2) : value;
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
