// What every descriptor does beside matching its key: outputs and their order, traces, reactors.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "host/kex/ActivityManager.h"
#include "host/kex/Trace.h"
#include "ipmi/Trim.h"
#include "tests/unit/ipmi_support.h"

namespace {

using namespace Emerson::IpmiIdentifier;
using ipmiTest::idpromOf;
using Lines = std::vector<std::string>;

TEST(IpmiTrim, stripsBlanksAndTabsAtTheEndsOnly) {
  struct {
    char const* text;
    char const* trimmed;
  } const rows[] = {
      {"", ""},           {" ", ""},
      {"\t\t", ""},       {"a", "a"},
      {" a", "a"},        {"a\t", "a"},
      {"  a b\t", "a b"}, {"\t a\tb \t", "a\tb"},
      {"a\n", "a\n"},     {" \na\r ", "\na\r"},
      {"\v a", "\v a"},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(trim(row.text), row.trimmed) << "'" << row.text << "'";
  }
}

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

/// What is traced, "LEVEL TEXT" a message, while every descriptor examines `fields`.
Lines traced(unsigned levels, ipmiTest::Fields const& fields) {
  Lines lines;
  Kex::TraceHandle::levelsIs("EmersonIpmiIdentifier", levels);
  Kex::traceSinkIs([&](Kex::TraceRecord const& record) {
    EXPECT_EQ(record.function, "doGenerateFdl");
    EXPECT_STREQ(record.source, "EmersonIpmiIdentifier");
    EXPECT_STREQ(record.context, "<unknown>");
    lines.push_back(std::to_string(record.level) + " " + record.text.charPtr());
  });
  for (auto const& descriptor : ipmiTest::oneOfEach()) {
    descriptor->doGenerateFdl(idpromOf(fields));
  }
  Kex::traceSinkIs({});
  Kex::TraceHandle::levelsIs("EmersonIpmiIdentifier", 0);
  return lines;
}

TEST(IpmiTraces, tellTypeAndKey) {
  ipmiTest::Fields const fields{.productName = " DS460SDC-3 \t", .partNumber = "P"};
  Lines generating{"0 Generating Fdl for Emerson 760"};
  for (auto const* type :
       {"DS460TwoMicrocontroller ", "DS460TwoMicrocontroller_Reversed",
        "DS460ThreeMicrocontroller ", "DS460ThreeMicrocontroller_Reversed", "DS460DC",
        "DS460DC_Reversed", "DS500", "DS500_Reversed", "DS500DC", "DS500DC_Reversed", "DS750",
        "DS750_Reversed", "DS1100", "DS1100_Reversed", "DS1100DC", "DS1100DC_Reversed", "DS1600",
        "DS1600_Reversed"}) {
    generating.push_back(std::string("0 Generating FDL for ") + type);
  }
  EXPECT_EQ(traced(1, fields), generating);

  // Four types of the DS460 family tell the key as stored, the twelve trimming ones as trimmed.
  Lines keys(4, "1 pName= DS460SDC-3 \t; strlen pName=13");
  keys.insert(keys.end(), 12, "1 pName=DS460SDC-3");
  EXPECT_EQ(traced(2, fields), keys);

  auto const both = traced(3, fields);
  EXPECT_EQ(both.size(), generating.size() + keys.size());
  EXPECT_EQ((Lines{both.end() - 2, both.end()}), (Lines{generating.back(), keys.back()}));
}

template <class Base>
class Watching : public Base {
 public:
  using Base::Base;
  std::multiset<std::string> seen;

 private:
  void onManaged() override { seen.emplace(this->notifier()->managed() ? "yes" : "no"); }
  void onFdl() override { seen.emplace(this->notifier()->fdl().empty() ? "empty" : "fdl"); }
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
