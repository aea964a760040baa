// Asking a descriptor whether it would know a supply.
#include "agent/models/Question.h"

#include <string>

#include "host/kex/trace/Trace.h"

namespace Agent {

namespace {

constexpr Kex::U8 kVersion = 1;

/// A product info area in which the field of this place holds `text`.
Kex::Ptr<Hal::Buf> areaWith(Ipmi::ProductInfoArea::Field field, std::string_view text) {
  std::string area{static_cast<char>(kVersion), 0, 0};
  area.append(field, '\0');  // empty fields before it
  area += static_cast<char>(text.size());
  area += text;
  area += '\0';  // the checksum's place
  auto buffer = Kex::make<Hal::Buf>(static_cast<Kex::U32>(area.size()));
  buffer->strIs(Kex::String8(std::string_view(area)));
  return buffer;
}

}  // namespace

Question::Question(Descriptors::KeyField field, std::string_view text)
    : contents_(Kex::make<Ipmi::IdpromContents>()) {
  using Ipmi::ProductInfoArea;
  contents_->productInfoIs(ProductInfoArea::ProductInfoAreaIs(
      areaWith(field == Descriptors::KeyField::partNumber ? ProductInfoArea::kPartNumber
                                                          : ProductInfoArea::kProductName,
               text)));
}

bool Question::isKnownTo(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor) const try {
  descriptor.doGenerateFdl(contents_);
  bool const isKnown = descriptor.managed();
  descriptor.managedIs(false);
  descriptor.fdlIs({});
  return isKnown;
} catch (...) {
  return false;
}

QuietTraces::QuietTraces() {
  Kex::traceSinkIs([](Kex::TraceRecord const&) {});
}

QuietTraces::~QuietTraces() { Kex::traceSinkIs({}); }

}  // namespace Agent
