// What every descriptor does beside matching its key: outputs and their order, traces, reactors.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "host/kex/time/ActivityManager.h"
#include "host/kex/trace/Trace.h"
#include "ipmi/model/Filling.h"
#include "tests/unit/ipmi_support.h"

namespace {

using namespace Emerson::IpmiIdentifier;
using ipmiTest::idpromOf;
using Lines = std::vector<std::string>;

/// Keeps the order in which its outputs are set.
class Recording : public DS3000 {
 public:
  Recording() : DS3000(Kex::Name("recording")) {}
  void managedIs(bool managed) override {
    calls.emplace_back(managed ? "managed" : "not managed");
    DS3000::managedIs(managed);
  }
  void fdlIs(Kex::String8 fdl) override {
    calls.emplace_back(fdl.empty() ? "empty" : "fdl");
    DS3000::fdlIs(fdl);
  }
  Lines calls;
};

TEST(IpmiGenerate, setsBothOutputsOnceInOrder) {
  auto const descriptor = Kex::make<Recording>();
  auto const own = idpromOf({.partNumber = "DS3000PE-3-402"});
  auto const other = idpromOf({.partNumber = "DS2900-3"});
  descriptor->doGenerateFdl(own);
  auto const first = descriptor->fdl();
  descriptor->doGenerateFdl(own);
  EXPECT_EQ(descriptor->fdl(), first);
  descriptor->doGenerateFdl(other);
  descriptor->doGenerateFdl(other);
  EXPECT_EQ(descriptor->calls, (Lines{"fdl", "managed", "fdl", "managed", "not managed", "empty",
                                      "not managed", "empty"}));
}

// A text and a number, in this order.
using TextAndNumber = Filling<&Ipmi::ProductInfoArea::serialNumber, &Model::fanSpeed>;
static_assert(TextAndNumber::fits("%s of %d") && TextAndNumber::fits("%s%d"));
static_assert(!TextAndNumber::fits("%d of %s"), "in another order");
static_assert(!TextAndNumber::fits("%s") && !TextAndNumber::fits("none"), "too few");
static_assert(!TextAndNumber::fits("%s of %d%s") && !TextAndNumber::fits("%s%d%d"), "too many");
static_assert(!TextAndNumber::fits("%s of %x") && !TextAndNumber::fits("%s%d%%"), "of no kind");
static_assert(!TextAndNumber::fits("%s of %d, 100 %"), "cut off");

TEST(IpmiGenerate, writesFieldsAsStoredUpToTheirNul) {
  struct {
    std::string stored;
    char const* written;
  } const rows[] = {
      {"EMERSON   ", "'EMERSON   '"}, {"", "''"},         {std::string("AB\0C", 4), "'AB'"},
      {"O'%s\\", "'O'%s\\'"},         {"a\nb", "'a\nb'"}, {" \t", "' \t'"},
  };
  for (auto const& row : rows) {
    auto const descriptor = dS2900Factory(Kex::Name("ds2900"));
    descriptor->doGenerateFdl(idpromOf({.manufacturer = row.stored,
                                        .partNumber = "DS2900-3-001",
                                        .productVersion = row.stored,
                                        .serialNumber = row.stored}));
    std::string const fdl(descriptor->fdl().view());
    for (std::string const label : {"fru.mfgName", "fru.hardwareRev", "fru.serialNum"}) {
      EXPECT_NE(fdl.find("\n" + label + " = " + row.written + "\nfru."), std::string::npos) << fdl;
    }
  }
}

/// What each type traces of a supply with the product name " DS460SDC-3 \t".
struct {
  std::set<std::string> types;
  std::string message;  ///< `$`: the type
  std::string key;
} const kTraced[] = {
    {{"DS3000", "DS3000_Reversed", "DS3000TE", "DS3000TE_Reversed", "DS3000DC", "DS3000DC_Reversed",
      "DS2700", "DS2700_Reversed", "DS2700DC", "DS2700DC_Reversed", "DS2900"},
     "",
     ""},
    {{"Emerson760"}, "0 Generating Fdl for Emerson 760", ""},
    {{"DS460TwoMicrocontroller", "DS460ThreeMicrocontroller"},
     "0 Generating FDL for $ ",
     "1 pName= DS460SDC-3 \t; strlen pName=13"},
    {{"DS460TwoMicrocontroller_Reversed", "DS460ThreeMicrocontroller_Reversed"},
     "0 Generating FDL for $",
     ""},
    {{"DS460DC", "DS460DC_Reversed"},
     "0 Generating FDL for $",
     "1 pName= DS460SDC-3 \t; strlen pName=13"},
    {{"DS500", "DS500_Reversed", "DS500DC", "DS500DC_Reversed", "DS750", "DS750_Reversed", "DS1100",
      "DS1100_Reversed", "DS1100DC", "DS1100DC_Reversed", "DS1600", "DS1600_Reversed"},
     "0 Generating FDL for $",
     "1 pName=DS460SDC-3"},
};

TEST(IpmiTraces, tellTypeAndKey) {
  Lines told;  // "LEVEL TEXT" a message
  Kex::TraceHandle::levelsIs("EmersonIpmiIdentifier", 3);
  Kex::TraceHandle::facilityIs("EmersonIpmiIdentifier", true);
  Kex::traceSinkIs([&](Kex::TraceRecord const& record) {
    EXPECT_STREQ(record.function, "doGenerateFdl");
    EXPECT_STREQ(record.source, "EmersonIpmiIdentifier");
    EXPECT_STREQ(record.context, "<unknown>");
    told.push_back(std::to_string(record.level) + " " + record.text.charPtr());
  });
  auto all = ipmiTest::oneOfEach();
  std::ranges::copy(ipmiTest::oneOfEachFile(), std::back_inserter(all));
  for (auto const& descriptor : all) {
    std::string const type = descriptor->name().charPtr();
    auto const* const row = std::ranges::find_if(
        kTraced, [&](auto const& traced) { return traced.types.contains(type); });
    if (row == std::end(kTraced)) {
      ADD_FAILURE() << "not told what " << type << " traces";
      continue;
    }
    Lines expected;
    for (std::string line : {row->message, row->key}) {
      if (auto const name = line.find('$'); name != std::string::npos) {
        line.replace(name, 1, type);
      }
      if (!line.empty()) {
        expected.push_back(line);
      }
    }
    told.clear();
    descriptor->doGenerateFdl(idpromOf({.productName = " DS460SDC-3 \t", .partNumber = "P"}));
    EXPECT_EQ(told, expected) << type;
  }
  Kex::traceSinkIs({});
  Kex::TraceHandle::facilityIs("EmersonIpmiIdentifier", false);
}

/// Notes the outputs that it hears of.
template <class Base>
struct Watching : Base {
  using Base::Base;
  void onManaged() override { seen.emplace(this->notifier()->managed() ? "yes" : "no"); }
  void onFdl() override { seen.emplace(this->notifier()->fdl().empty() ? "empty" : "fdl"); }
  std::multiset<std::string> seen;
};

TEST(IpmiReactors, hearOfBothOutputs) {
  auto const descriptor = dS750_ReversedFactory(Kex::Name("ds750"));
  auto const reader = Kex::make<Watching<DS750_Reversed::NotifieeConst>>(descriptor);
  auto const writer = Kex::make<Watching<DS750_Reversed::Notifiee>>(descriptor);
  for (auto const* name : {"DS750PED-3-001", "DS750PED-3"}) {
    descriptor->doGenerateFdl(idpromOf({.productName = name}));
    Kex::activityManager().runPending();
  }
  std::multiset<std::string> const both{"empty", "fdl", "no", "yes"};
  EXPECT_EQ(reader->seen, both);
  EXPECT_EQ(writer->seen, both);
}

}  // namespace
