// The sample FRU images, as measurements and soak use them.
#include "bench/support/Sample.h"

#include <algorithm>
#include <numeric>
#include <span>

#include "agent/base/Error.h"
#include "agent/slots/FruImage.h"

namespace Bench {

namespace {

/// Where the common header and the area's header keep offset and length, both in units of 8 bytes.
constexpr std::size_t kProductAreaByte = 4;
constexpr std::size_t kAreaLengthByte = 1;

}  // namespace

Sample::Sample(std::string const& name)
    : image_(Agent::readFruImage(PSU_SAMPLES "/" + name + ".fru")),
      areaStart_(image_.at(kProductAreaByte) * std::size_t{8}),
      areaLength_(image_.at(areaStart_ + kAreaLengthByte) * std::size_t{8}) {
  Ipmi::ProductInfoArea const parsed(*area());
  serialStart_ = areaStart_ + parsed.serialNumberOffset();
  serialLength_ = parsed.serialNumberLength();
  if (serialLength_ == 0) {
    throw Agent::Failure(name + ": has no serial number");
  }
}

std::string Sample::serialNumber() const {
  auto const bytes = std::span(image_).subspan(serialStart_, serialLength_);
  return {bytes.begin(), bytes.end()};
}

void Sample::serialNumberIs(std::string_view text) {
  auto const field = std::span(image_).subspan(serialStart_, serialLength_);
  text.remove_prefix(text.size() - std::min(text.size(), field.size()));
  std::ranges::fill(field, '0');
  std::ranges::copy(text, field.last(text.size()).begin());
  setChecksumRight();
}

void Sample::update() {
  // The product version's last byte stands before the serial number's type and length.
  image_.at(serialStart_ - 2) ^= 7;
  setChecksumRight();
}

void Sample::setChecksumRight() {
  auto const area = std::span(image_).subspan(areaStart_, areaLength_);
  area.back() = 0;
  area.back() = static_cast<Kex::U8>(-std::accumulate(area.begin(), area.end(), 0));
}

Kex::Ptr<Ipmi::IdpromContents> Sample::contents() const {
  auto contents = Kex::make<Ipmi::IdpromContents>();
  contents->productInfoIs(Kex::make<Ipmi::ProductInfoArea>(*area()));
  return contents;
}

Kex::Ptr<Hal::Buf> Sample::area() const {
  auto buffer = Kex::make<Hal::Buf>(static_cast<Kex::U32>(areaLength_));
  buffer->doAppend(std::span(image_).subspan(areaStart_, areaLength_));
  return buffer;
}

}  // namespace Bench
