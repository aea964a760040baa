// The same work without the framework, as straight as it can be written.
#include "bench/ByHand.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <span>
#include <string_view>

#include "host/descriptors/Trim.h"
#include "ipmi/families/All.h"

namespace ByHand {

namespace {

using namespace Emerson::IpmiIdentifier;
using Kex::U8;

/// What tells a model.
struct Key {
  KeyField field;
  MatchRule rule;
  AcceptedKeys accepted;
};

// Copied from the rows at compile time, so that nothing of what fills templates is linked.
consteval auto keysOfModels() {
  std::array<Key, kModelCount> keys;
  for (std::span<Model const> const family : std::initializer_list<std::span<Model const>>{
           kDs3000Models, kDs2700Models, kDs2900Models, kEmerson760Models, kDs460Models,
           kDs500Models, kDs750Models, kDs1100Models, kDs1600Models}) {
    for (Model const& model : family) {
      keys[static_cast<std::size_t>(model.id)] = {model.family->keyField, model.family->rule,
                                                  model.keys};
    }
  }
  return keys;
}
constexpr auto kKeys = keysOfModels();

constexpr std::size_t kMfrIdLength = 7;
constexpr std::size_t kHeaderLength = 8;
constexpr std::size_t kAreaHeaderLength = 2;
constexpr std::size_t kChunk = 16;
/// Bytes in which headers count offsets and lengths.
constexpr std::size_t kUnit = 8;
constexpr std::size_t kLongestArea = 255;

bool isAccepted(std::string_view text, std::string_view accepted, MatchRule rule) {
  return !accepted.empty() &&
         (rule == MatchRule::prefix ? text.starts_with(accepted) : text == accepted);
}

bool knows(Key const& key, Fields const& fields) {
  std::string_view text =
      key.field == KeyField::partNumber ? fields.partNumber : fields.productName;
  if (key.rule == MatchRule::trimmedEquality) {
    text = Descriptors::trimmed(text);
  }
  return isAccepted(text, key.accepted[0], key.rule) || isAccepted(text, key.accepted[1], key.rule);
}

/// One transaction: `length` bytes of what the supply answers go to `target`.
bool read(Agent::SimulatedSupply const& supply, Smbus::Transaction const& transaction, U8* target,
          std::size_t length) {
  Smbus::Reply const reply = supply.answer(transaction);
  if (!reply.isOk || reply.read.bytes[0] < length) {
    return false;
  }
  std::memcpy(target, reply.read.bytes.data() + 1, length);
  return true;
}

bool readMfrId(Agent::SimulatedSupply const& supply, std::array<U8, kMfrIdLength>& mfrId) {
  Smbus::VornAddress const address(0x9958);
  return read(supply, {.address = address, .write = {}, .readLength = kMfrIdLength + 1},
              mfrId.data(), kMfrIdLength);
}

bool readFru(Agent::SimulatedSupply const& supply, std::size_t offset, U8* target,
             std::size_t length) {
  Smbus::Transaction transaction{.address = Smbus::VornAddress(0xB058),
                                 .write = {},
                                 .readLength = static_cast<U8>(length + 1)};
  transaction.write.bytes[0] = 1;
  transaction.write.bytes[1] = static_cast<U8>(offset);
  transaction.write.length = 2;
  return read(supply, transaction, target, length);
}

bool isZeroSum(std::span<U8 const> bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), 0U) % 256 == 0;
}

/// Takes the field at `at`, of 8-bit text, and goes on to the next.
std::string_view nextField(std::span<U8 const> area, std::size_t& at) {
  if (at >= area.size() || area[at] == 0xC1) {
    return {};
  }
  std::size_t const length = area[at] & 0x3FU;
  if (length > area.size() - at - 1) {
    at = area.size();
    return {};
  }
  std::string_view const text(reinterpret_cast<char const*>(area.data()) + at + 1, length);
  at += 1 + length;
  return text;
}

/// Fills the template of the DS2900.
void fill(Fields const& fields, std::string& fdl) {
  std::string_view pattern = ds2900FdlTemplate;
  fdl.clear();
  for (std::string const* const text :
       {&fields.manufacturerName, &fields.productVersion, &fields.serialNumber}) {
    std::size_t const placeholder = pattern.find('%');
    fdl.append(pattern, 0, placeholder).append(*text);
    pattern.remove_prefix(placeholder + 2);
  }
  fdl.append(pattern);
}

}  // namespace

bool walk(Fields const& fields, Outputs& outputs) {
  Output* output = outputs.data();
  for (Key const& key : kKeys) {
    if (knows(key, fields)) {
      return true;
    }
    output->managed = false;
    output->fdl.clear();
    ++output;
  }
  return false;
}

bool recognise(Agent::SimulatedSupply const& supply, Description& description) {
  std::array<U8, kMfrIdLength> mfrId;
  std::array<U8, kHeaderLength> header;
  if (!readMfrId(supply, mfrId) || !readFru(supply, 0, header.data(), header.size())) {
    return false;
  }
  description.mfrId.assign(mfrId.begin(), mfrId.end());
  if ((description.mfrId != "EMERSON" && description.mfrId != "ARTESYN") || !isZeroSum(header) ||
      (header[0] & 0x0F) != 1 || header[4] == 0) {
    return false;
  }
  std::size_t const start = kUnit * header[4];
  std::array<U8, kLongestArea> bytes;
  if (!readFru(supply, start, bytes.data(), kAreaHeaderLength) || bytes[0] != 1) {
    return false;
  }
  std::size_t const length = std::min(kUnit * bytes[1], kLongestArea);
  for (std::size_t at = kAreaHeaderLength; at < length; at += kChunk) {
    if (!readFru(supply, start + at, bytes.data() + at, std::min(kChunk, length - at))) {
      return false;
    }
  }
  std::span<U8 const> const area = std::span(bytes).first(length);
  if (!isZeroSum(area)) {
    return false;
  }
  Fields& fields = description.fields;
  std::size_t at = 3;
  fields.manufacturerName = nextField(area, at);
  fields.productName = nextField(area, at);
  fields.partNumber = nextField(area, at);
  fields.productVersion = nextField(area, at);
  fields.serialNumber = nextField(area, at);
  if (std::ranges::none_of(kKeys, [&](Key const& key) { return knows(key, fields); })) {
    return false;
  }
  fill(fields, description.fdl);
  std::size_t const serialLength = fields.serialNumber.size();
  std::array<U8, kChunk> serial;
  return readFru(supply, start + at - serialLength, serial.data(), serialLength) &&
         std::memcmp(serial.data(), fields.serialNumber.data(), serialLength) == 0;
}

}  // namespace ByHand
