// What a product info area's length may have been meant to be.
#pragma once

#include <optional>
#include <span>

#include "host/ipmi/CommonAreaHeader.h"

namespace Ipmi {

/// The length, in units of 8 bytes, with which the product info area's checksum is right though it
/// is not with the length that stands in the area: makers write the one for the other. It is
/// suggested by the end mark of the fields or by the area that follows in `header`, and holds where
/// - the area has format version 1, every field up to the serial number, and an end mark,
/// - 8-bit texts are printable ASCII,
/// - behind the mark up to the checksum one byte is repeated, as what fills an area is,
/// - all its bytes, with the length as it is stored or as it is suggested, add up to 0.
///
/// `area` is what is known of the memory from the area's start on. None when nothing is suggested.
KEX_API std::optional<Kex::U8> lengthHint(std::span<Kex::U8 const> area,
                                          CommonAreaHeader const& header);

}  // namespace Ipmi
