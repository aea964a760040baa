// The sample FRU images, as measurements and soak use them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "agent/transport/SimulatedSupply.h"
#include "host/ipmi/IdpromContents.h"

namespace Bench {

/// A FRU image of `samples/`, whose serial number can be changed.
class Sample {
 public:
  /// `name` is the file's, without its ending. Throws an `Agent::Failure` when it cannot be read,
  /// or has no serial number.
  explicit Sample(std::string const& name);

  std::string serialNumber() const;
  /// Puts the end of `text`, filled up with zeros in front, in place of the serial number, and sets
  /// the checksum right.
  void serialNumberIs(std::string_view text);
  /// Changes the last byte of the product version, or changes it back, and sets the checksum right.
  void update();

  std::vector<Kex::U8> const& image() const { return image_; }
  Agent::SimulatedSupply supply() const { return {image_, "EMERSON"}; }
  /// What identification makes of the image.
  Kex::Ptr<Ipmi::IdpromContents> contents() const;
  /// The product info area as identification reads it.
  Kex::Ptr<Hal::Buf> area() const;

 private:
  void setChecksumRight();

  std::vector<Kex::U8> image_;
  std::size_t areaStart_;
  std::size_t areaLength_;
  std::size_t serialStart_;
  std::size_t serialLength_;
};

}  // namespace Bench
