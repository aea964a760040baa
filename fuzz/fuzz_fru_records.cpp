// Fuzzes the FRU records: whatever the bytes say, nothing is read past the buffer.
#include <algorithm>

#include "fuzz/FuzzInput.h"
#include "host/ipmi/CommonAreaHeader.h"
#include "host/ipmi/ProductInfoArea.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  auto const buffer = Kex::make<Hal::Buf>(0U);
  // Grown to exactly its contents, so that the sanitizer sees a byte too many.
  buffer->doAppend({data, size});

  Ipmi::CommonAreaHeader const header(*buffer);
  Fuzz::require(header.productAreaOffset() % 8 == 0);

  Ipmi::ProductInfoArea const area(*buffer);
  bool isOver = false;
  std::size_t end = 0;
  auto const check = [&](Ipmi::AreaField const& field) {
    if (field.offset == 0) {
      isOver = true;
      Fuzz::require(field.length == 0 && field.text.empty());
      return;
    }
    Fuzz::require(!isOver && field.offset > end);
    end = std::size_t{field.offset} + field.length;
    // The last byte is the checksum.
    Fuzz::require(end < size && field.text.len() <= 2U * field.length);
  };
  std::ranges::for_each(area.fields(), check);
  std::ranges::for_each(area.customFields(), check);
  auto const fault = area.fault();
  Fuzz::require(!fault || fault->offset <= size);
  return 0;
}
