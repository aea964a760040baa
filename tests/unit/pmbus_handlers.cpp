// What the three handlers do with each kind of answer: bus operations, traces, attributes.
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Fru;
using busTest::Lines;
using busTest::Slot;

std::string const kSlot = "PowerSupplySlot S: Identifier::";

std::string entered(std::string const& handler, std::string const& status) {
  return "3 " + kSlot + "handle" + handler + "Request(" + status + ")";
}

Lines operator+(Lines lines, Lines const& more) {
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

Fru units(unsigned units) { return {.units = units}; }
Fru said(int units) { return {.unitsSaid = units}; }
Fru serial(std::string const& text) { return {.serial = text}; }
Fru spoilt() { return {.spoilt = 1}; }
/// An area that begins in the image's last 8 bytes.
Fru last(unsigned units) { return {.areaStart = 31, .units = units}; }

/// A run up to the last answer of `script`, and what that answer makes the handler do after it has
/// told of it.
struct Row {
  char const* what;
  std::string script;
  Lines log;
  Fru fru = {};
  std::string mfrId = "EMERSON";
  std::string answeredMfrId = "EMERSON";
};

/// `until`: seconds to run.
template <std::size_t n>
void expectRows(std::string const& handler, Row const (&rows)[n], double until) {
  for (Row const& row : rows) {
    SCOPED_TRACE(row.what);
    Slot slot(row.script, row.fru, row.answeredMfrId);
    slot.descriptorIs("stub", "P");
    slot.run(until);
    bool const hasFailed = row.script.back() == 'x';
    Lines const start{entered(handler, hasFailed ? "failed" : "succeeded")};
    EXPECT_EQ(slot.log, start + (hasFailed ? Lines{} : Lines{"failCount=0"}) + row.log);
    EXPECT_EQ(slot.identifier->mfrId().view(), row.mfrId);
  }
}

TEST(PmbusPoll, endsAsTheAnswerSays) {
  Lines const unsupported{"4 S: MFR_ID is not supported", "= unsupportedManufacturer", "wait 1"};
  Lines const supported{"3 PowerSupplySlot S: Setting up request for FRU data header",
                        "> 58:b0 w0100 r9"};
  Lines const rejected{"4 S not ipmi version 1", "= invalidHeader", "wait 1"};
  Lines const accepted{"4 S is ipmi version 1", "no productInfoBuf", "4 state: pollForInsertion",
                       "state=3", "> 58:b0 w0108 r3"};
  Row const rows[] = {
      {"no MFR_ID", "x", {"= absent", "wait 1", "serialNum=''"}, {}, ""},
      {"MFR_ID", ".", supported},
      {"the other MFR_ID", ".", supported, {}, "ARTESYN", "ARTESYN"},
      {"a longer MFR_ID", ".", supported, {}, "EMERSON", "EMERSON NETWORK"},
      {"the count of the MFR_ID does not matter", "0", supported},
      {"another MFR_ID", ".", unsupported, {}, "", "EMERSOM"},
      {"a shorter MFR_ID", ".", unsupported, {}, "", "EMERSO"},
      {"an MFR_ID in lower case", ".", unsupported, {}, "", "emerson"},
      {"no header", ".x", {"= unreadable", "wait 1", "serialNum=''"}, {}, ""},
      {"a short header", ".7",
       Lines{"4 S: incomplete read of common header", "= unreadable", "wait 1"}},
      {"a header of 8 bytes", ".8", accepted},
      {"a header with more bytes", ".9", accepted},
      {"a header of version 2", "..", rejected, {.headerVersion = 2}},
      {"a header with a wrong checksum", ".f", rejected},
      {"a header without an area", "..", rejected, {.areaStart = 0}},
  };
  expectRows("PollForInsertion", rows, 0.2);
}

TEST(PmbusIdentify, endsAsTheAnswerSays) {
  Lines const givenUp{"= unreadable", "wait 1", "serialNum=''"};
  auto const chunk = [](int left, char const* operation) {
    return Lines{"4 Bytes left to read in product info: " + std::to_string(left),
                 std::string("> 58:b0 ") + operation};
  };
  auto const area = [&](int size, int left, char const* operation) {
    return Lines{"productInfoBuf " + std::to_string(size)} + chunk(left, operation);
  };
  auto const useless = [](char const* hwError) {
    return Lines{"fdl=''",  "serialNum=''",
                 hwError,   "3 " + kSlot + "doSetupCheckSupplyRequest(0)",
                 "state=4", "> 58:b0 w0108 r3"};
  };
  Lines const badArea = Lines{"4 S product info checksum is not valid"} + useless("hwError");
  Lines const noArea = Lines{"productInfoBuf 0"} + badArea;
  auto const read = [](std::string const& serial, char const* operation) {
    return Lines{"serialNum='" + serial + "'",
                 "fdl=''",
                 "no hwError",
                 "4 S: checking power supply descriptors",
                 "4 S: identified as stub",
                 "fdl='fdl of stub'",
                 "3 " + kSlot + "doSetupCheckSupplyRequest(1)",
                 "state=4",
                 std::string("> 58:b0 ") + operation};
  };
  std::string const serial16 = "ABCDEFGHIJKLMNOP";
  Row const rows[] = {
      {"first failure", "..x", {"failCount=1", "> 58:b0 w0108 r3"}},
      {"third failure", "..xxx", {"failCount=3", "> 58:b0 w0108 r3"}},
      {"fourth failure", "..xxxx", Lines{"failCount=4"} + givenUp, {}, ""},
      {"a success between", "...xxx.", chunk(14, "w011a r15"), units(4)},
      {"failures of a chunk", "..xxx.xxxx", Lines{"failCount=4"} + givenUp, {}, ""},
      {"a short header",
       "..1",
       {"4 S: incomplete read of product info header: 1 < 2", "= unreadable", "wait 1"}},
      {"an unknown version",
       "..L",
       Lines{"3 PowerSupplySlot S: unsupported product info version A"} + useless("no hwError"),
       {.areaVersion = 'A'}},
      {"a header of 2 bytes", "..2", area(16, 14, "w010a r15")},
      {"1 unit", "...", area(8, 6, "w010a r7"), said(1)},
      {"31 units", "...", area(248, 246, "w010a r17"), units(31)},
      {"33 units are 1", "...", area(8, 6, "w010a r7"), said(33)},
      {"40 units are 8", "...", area(64, 62, "w010a r17"), said(40)},
      {"0 units", "...", noArea, said(0)},
      {"32 units are 0", "...", noArea, said(32)},
      {"a wrap after the header", "...", area(32, 30, "w01fa r17"), last(4)},
      {"a wrap after a chunk", "....", chunk(14, "w010a r15"), last(4)},
      {"the largest area", "................", chunk(38, "w01da r17"), units(31)},
      {"a short chunk", "...5", chunk(9, "w010f r10")},
      {"a chunk with more bytes", "...L", chunk(14, "w011a r15"), units(4)},
      {"an empty chunk", "...0", chunk(14, "w010a r15")},
      {"a third empty chunk", "...000", chunk(14, "w010a r15")},
      {"a fourth empty chunk", "...0000", givenUp, {}, ""},
      {"empty chunks and failures", "...00xxx0x0", givenUp, {}, ""},
      {"progress between empty chunks", "...0001000", chunk(13, "w010b r14")},
      {"a wrong checksum", "....", badArea, spoilt()},
      {"a supply", "....", read("S1", "w0111 r3")},
      // The area goes on in the common header: its bytes 8 and 9 are a serial number of one NUL.
      {"the serial number's address wraps",
       "....",
       read(std::string(1, '\0'), "w0101 r2"),
       {.areaStart = 31, .units = 2, .language = '\xAC'}},
      {"a serial number of 16 bytes", ".....", read(serial16, "w0111 r17"), serial(serial16)},
      {"a serial number of 17 bytes", ".....", read(serial16 + "Q", "w0111 r17"),
       serial(serial16 + "Q")},
      {"a serial number of 20 bytes", ".....", read(serial16 + "QRST", "w0111 r17"),
       serial(serial16 + "QRST")},
      {"no serial number", "....", read("", "w0108 r3"), serial("")},
  };
  expectRows("IdentifySupply", rows, 0.2);
}

TEST(PmbusCheck, endsAsTheAnswerSays) {
  auto const isShort = [](char const* counts) {
    return Lines{std::string("4 S: incomplete read by checkSupplyRequest: ") + counts,
                 "= unreadable", "wait 1"};
  };
  Lines const good{"serialNum='S1'", "= identified", "wait 1"};
  std::string const serial20 = "ABCDEFGHIJKLMNOPQRST";
  Row const rows[] = {
      {"first failure", "....x", {"failCount=1", "> 58:b0 w0111 r3"}},
      {"third failure", "....xxx", {"failCount=3", "> 58:b0 w0111 r3"}},
      {"fourth failure",
       "....xxxx",
       {"failCount=4", "= unreadable", "wait 1", "serialNum=''"},
       {},
       ""},
      {"a success after failures", "....xxx.", good},
      {"a short answer", "....1", isShort("1 < 2")},
      {"the serial number", ".....", good},
      {"more bytes than asked for", "....L", good},
      {"another serial number", "....f", {"serialNum='S0'", "wait 0.8"}},
      {"a long serial number",
       "......",
       {"serialNum='" + serial20 + "'", "= identified", "wait 1"},
       serial(serial20)},
      {"another long serial number",
       ".....f",
       {"serialNum='ACCDEFGHIJKLMNOPQRST'", "wait 0.8"},
       serial(serial20)},
      {"the header", ".....", {"serialNum=''", "= identified", "wait 1"}, serial("")},
      {"a short header", "....1", isShort("1 < 2"), serial("")},
      {"another header", "....f", {"serialNum=''", "wait 0.8"}, serial("")},
      {"a wrong checksum", ".....", {"serialNum=''", "= invalidChecksum", "wait 1"}, spoilt()},
  };
  expectRows("CheckSupply", rows, 0.95);
}

TEST(PmbusCheck, keepsOrDropsWhatWasRead) {
  Slot kept("....1");
  kept.run(0.2);
  EXPECT_EQ(kept.identifier->serialNum(), "S1");
  EXPECT_TRUE(kept.identifier->idprom()->header());
  Slot dropped("....xxxx");
  dropped.run(0.95);
  EXPECT_FALSE(dropped.identifier->idprom()->header());

  // A serial number that was cleared while its re-read was loaded.
  Slot cleared("....x.");
  cleared.run(0.2);
  cleared.identifier->serialNumIs("");
  cleared.run(0.45);
  EXPECT_EQ(cleared.identifier->productInfoHeaderBuf()->str(), "S1");
  EXPECT_EQ(cleared.identifier->serialNum(), "");
}

TEST(PmbusPoll, rejectsAnIdentityThatItsTableDropped) {
  Slot slot("..");
  slot.bus->onAnswer = [&] {
    if (slot.bus->script.empty()) {
      slot.identifier->mfrIdSupportedIs("EMERSON", false);
      slot.log.clear();
    }
  };
  slot.run();
  EXPECT_EQ(slot.log, (Lines{entered("PollForInsertion", "succeeded"), "failCount=0",
                             "4 S: MFR_ID is not supported", "= invalidHeader", "wait 1"}));
  EXPECT_EQ(slot.identifier->mfrId(), "EMERSON");
  EXPECT_EQ(slot.supply().reason, "MFR_ID \"EMERSON\" is not supported");
}

TEST(PmbusPoll, keepsTheHeaderThatItRejects) {
  Slot slot("..", {.headerVersion = 3});
  slot.run();
  EXPECT_EQ(slot.identifier->idprom()->header()->ipmiVersion(), 3);
}

TEST(PmbusPoll, preparesIdentificationAgainAtEverySuccess) {
  Slot slot("...");
  slot.run(0.1);
  slot.identifier->pollForInsertionRequest()->activeIs(true);
  slot.run(0.1);
  EXPECT_EQ(slot.log,
            (Lines{entered("PollForInsertion", "succeeded"), "failCount=0", "4 S is ipmi version 1",
                   "no productInfoBuf", "4 state: pollForInsertion", "wait 0.2"}));
  EXPECT_EQ(slot.identifier->identifySupplyRequest()->operations().size(), 2U);
}

TEST(PmbusHandlers, doNothingWithoutATerminalStatusOrBeforeConstruction) {
  using Identifier = Emerson::PmbusIdentifier::Identifier;
  struct {
    void (Identifier::*handle)();
    char const* name;
  } const rows[] = {
      {&Identifier::handlePollForInsertionRequest, "PollForInsertion"},
      {&Identifier::handleIdentifySupplyRequest, "IdentifySupply"},
      {&Identifier::handleCheckSupplyRequest, "CheckSupply"},
  };
  for (auto const& row : rows) {
    Slot slot(".....");
    slot.run(0.2);
    slot.log.clear();
    (*slot.identifier.*row.handle)();
    EXPECT_EQ(slot.log, Lines{entered(row.name, "idle")});
    slot.identifier->constructedIs(false);
    (*slot.identifier.*row.handle)();
    EXPECT_EQ(slot.log.size(), 1U) << row.name;
  }
}

TEST(PmbusIdentify, asksDescriptorsInOrderUpToTheFirstThatManages) {
  char const* const names[] = {"alpha", "beta", "gamma", "delta"};
  for (std::size_t managing = 0; managing <= std::size(names); ++managing) {
    Slot slot(".....");
    for (auto const* name : names) {
      slot.descriptorIs(name, "other");
    }
    Lines order;
    for (auto walk = Slot::registry()->powerSupplyDescriptorIterator(); walk; ++walk) {
      order.emplace_back(walk->name().charPtr());
    }
    ASSERT_EQ(order.size(), std::size(names));
    // This one and all after it would manage the supply.
    for (std::size_t i = managing; i < order.size(); ++i) {
      slot.descriptorIs(order[i].c_str(), "P");
    }
    slot.run(0.2);
    bool const isManaged = managing < order.size();
    EXPECT_EQ(slot.asked.size(), std::min(managing + 1, order.size()));
    EXPECT_EQ(slot.asked,
              Lines(order.begin(), order.begin() + static_cast<long>(slot.asked.size())));
    EXPECT_EQ(slot.identifier->fdl().view(), isManaged ? "fdl of " + order[managing] : "");
    EXPECT_EQ(slot.verdict(), isManaged ? "identified" : "unrecognised");
    EXPECT_EQ(slot.identifier->serialNum(), "S1");
  }
}

TEST(PmbusIdentify, takesAnEmptyRegistryForNoMatch) {
  Slot slot(".....");
  slot.run(0.2);
  EXPECT_EQ(slot.verdict(), "unrecognised");
  EXPECT_EQ(slot.supply().reason, "no descriptor knows product name \"\", part number \"P\"");
  EXPECT_FALSE(slot.supply().descriptor);
}

}  // namespace
