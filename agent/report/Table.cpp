// A table for people.
#include "agent/report/Table.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "agent/base/Terminal.h"
#include "agent/base/Text.h"
#include "agent/report/Report.h"

namespace Agent {

namespace {

constexpr std::size_t kColumns = 5;
using Cells = std::array<std::string, kColumns>;

std::string cell(std::string_view text) { return text.empty() ? "-" : escaped(text); }

Cells cellsOf(SupplyRow const& row) {
  if (row.supply == nullptr) {
    return {cell(row.source), "-", "-", "-", "-"};
  }
  Supply const& supply = *row.supply;
  return {cell(row.source), cell(supply.descriptor.value_or("").view()),
          cell(assigned(supply, "fru.modelName")),
          cell(supply.product ? supply.product->serialNumber().view() : std::string_view()),
          verdictName(supply.verdict)};
}

}  // namespace

std::string tableOf(std::vector<SupplyRow> const& rows) {
  std::vector<Cells> lines{{"SOURCE", "TYPE", "MODEL", "SERIAL", "VERDICT"}};
  std::ranges::transform(rows, std::back_inserter(lines), cellsOf);
  std::array<std::size_t, kColumns> widths{};
  for (Cells const& cells : lines) {
    for (std::size_t i = 0; i < kColumns; ++i) {
      widths[i] = std::max(widths[i], cells[i].size());
    }
  }
  std::string text;
  for (std::size_t number = 0; Cells & cells : lines) {
    bool const isIdentified = cells.back() == verdictName(Verdict::identified);
    Look const look = number++ == 0 ? Look::heading : isIdentified ? Look::good : Look::bad;
    for (std::size_t i = 0; i + 1 < kColumns; ++i) {
      cells[i].resize(widths[i], ' ');
      text += (number == 1 ? inLook(look, cells[i]) : cells[i]) + "  ";
    }
    text += inLook(look, cells.back()) + '\n';
  }
  return text;
}

}  // namespace Agent
