// What may be wrong with the memory of a supply that is not identified.
#include "agent/report/Hint.h"

#include <algorithm>
#include <utility>

#include "host/ipmi/LengthHint.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

using Hardware::PowerSupplySlot::Stage;
using Ipmi::CommonAreaHeader;
using Ipmi::ProductInfoArea;

constexpr std::size_t kUnit = 8;

/// Null where it is not known whole.
Kex::Ptr<CommonAreaHeader const> headerOf(FruBytes const& fru) {
  auto const bytes = fru.from(0, CommonAreaHeader::kLength);
  if (bytes.size() < CommonAreaHeader::kLength) {
    return {};
  }
  auto const buffer = Kex::make<Hal::Buf>(0U);
  buffer->doAppend(bytes);
  return CommonAreaHeader::CommonAreaHeaderIs(buffer);
}

/// Where the file ends, if that is inside what was needed; empty if it is not.
std::string fileEnd(FruBytes const& fru, std::size_t end) {
  std::string const told = "the file ends at byte " + std::to_string(end);
  if (end < CommonAreaHeader::kLength) {
    return told + ", inside the FRU common header (0 to 7)";
  }
  auto const header = headerOf(fru);
  if (!header || header->fault()) {
    return "";
  }
  std::size_t const start = header->productAreaOffset();
  std::string const area = "the product info area";
  if (end <= start) {
    return told + ", and " + area + " begins at " + std::to_string(start);
  }
  auto const bytes = fru.from(static_cast<Kex::U8>(start), ProductInfoArea::kHeaderLength);
  if (end < start + ProductInfoArea::kHeaderLength) {
    return told + ", inside " + area + ", which begins at " + std::to_string(start);
  }
  std::size_t const length = static_cast<Kex::U8>(bytes[ProductInfoArea::kLength] * kUnit);
  return start + length <= end ? ""
                               : told + ", inside " + area + " (" + std::to_string(start) + " to " +
                                     std::to_string(start + length - 1) + ")";
}

}  // namespace

std::optional<Hint> hintOf(Supply const& supply, FruBytes const& fru,
                           std::optional<std::size_t> fileLength) {
  auto const header = headerOf(fru);
  if (supply.verdict == Verdict::invalidChecksum && header && !header->fault()) {
    // What is behind the end of a file is nobody's memory.
    std::size_t const start = header->productAreaOffset();
    std::size_t const known = fileLength ? *fileLength - std::min(*fileLength, start) : 0xFF;
    auto const area = fru.from(static_cast<Kex::U8>(start), std::min<std::size_t>(known, 0xFF));
    if (auto const length = Ipmi::lengthHint(area, *header)) {
      return Hint{
          .text = Kex::format("with length %u x 8 bytes the checksum is right", unsigned{*length})
                      .charPtr(),
          .length = length};
    }
  }
  if (fileLength && rowOf(supply.verdict).stage >= Stage::header) {
    if (std::string end = fileEnd(fru, *fileLength); !end.empty()) {
      return Hint{.text = std::move(end)};
    }
  }
  return std::nullopt;
}

std::vector<Kex::U8> repaired(FruBytes const& fru, Kex::U8 length) {
  std::vector<Kex::U8> memory(0x100, 0xFF);
  std::ranges::copy(fru.from(0, CommonAreaHeader::kLength), memory.begin());
  auto const start = static_cast<Kex::U8>(memory[CommonAreaHeader::kProductArea] * kUnit);
  std::vector<Kex::U8> area = fru.from(start, length * kUnit);
  area[ProductInfoArea::kLength] = length;
  area.back() = Ipmi::checksumOf(std::span(area).first(area.size() - 1));
  for (Kex::U8 address = start; Kex::U8 const byte : area) {
    memory[address++] = byte;
  }
  return memory;
}

}  // namespace Agent
