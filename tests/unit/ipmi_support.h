// FRU contents made from fields, and one descriptor of every type, for the descriptors' tests.
#pragma once

#include <string>
#include <vector>

#include "agent/base/JsonDocument.h"
#include "agent/models/ModelDescriptor.h"
#include "agent/models/ModelFile.h"
#include "agent/models/ModelFolder.h"
#include "host/hal/Buf.h"
#include "host/ipmi/IdpromContents.h"
#include "host/ipmi/ProductInfoArea.h"
#include "ipmi/Descriptors.h"

namespace ipmiTest {

struct Fields {
  std::string manufacturer = "EMERSON";
  std::string productName{};
  std::string partNumber{};
  std::string productVersion = "A1";
  std::string serialNumber = "K1822F04711";
};

inline Kex::Ptr<Ipmi::IdpromContents> idpromOf(Fields const& fields) {
  std::string area("\x01\x00\x19", 3);
  for (auto const& field : {fields.manufacturer, fields.productName, fields.partNumber,
                            fields.productVersion, fields.serialNumber}) {
    area += static_cast<char>(field.size());  // kind 0, binary: the bytes as they stand
    area += field;
  }
  area += '\xC1';
  auto const buffer = Kex::make<Hal::Buf>(static_cast<Kex::U32>(area.size()));
  buffer->strIs(Kex::String8(std::string_view(area)));
  auto idprom = Kex::make<Ipmi::IdpromContents>();
  idprom->productInfoIs(Kex::make<Ipmi::ProductInfoArea>(*buffer));
  return idprom;
}

using Descriptors = std::vector<Kex::Ptr<Ipmi::SupportedPowerSupplyDescriptorBase>>;

/// One descriptor of every type, named after its type.
inline Descriptors oneOfEach() {
  using namespace Emerson::IpmiIdentifier;
  Descriptors all;
#define EMERSON_MAKE(type, stem) all.emplace_back(stem##Factory(Kex::Name(#type)));
  EMERSON_DESCRIPTOR_TYPES(EMERSON_MAKE)
#undef EMERSON_MAKE
  return all;
}

/// The same, made from the model files of `samples/models/`, in another order.
inline Descriptors oneOfEachFile() {
  Descriptors all;
  for (std::string const& file : Agent::modelFilesIn(PSU_SAMPLES "/models")) {
    for (auto const& model :
         Agent::parseModels(Agent::parseJson(Agent::readModelText(file)), file)) {
      all.emplace_back(Agent::newDescriptor(model));
    }
  }
  return all;
}

}  // namespace ipmiTest
