// What the three handlers do with each kind of answer: bus operations, traces, attributes.
#include "tests/support/ScriptedBus.h"

namespace {

using busTest::Fru;
using busTest::Slot;
using Emerson::PmbusIdentifier::Identifier;

Fru const kLong{.serial = "ABCDEFGHIJKLMNOPQRST"};
Fru const kVersionA{.areaVersion = 'A'};
// The area goes on in the common header: its bytes 8 and 9 are a serial number of one NUL.
Fru const kWrapped{.areaStart = 31, .units = 2, .language = '\xAC'};

std::string entered(std::string const& handler, std::string const& status) {
  return "3 PowerSupplySlot S: Identifier::handle" + handler + "Request(" + status + ")";
}

/// A run up to the last answer of `script`, and what that answer makes the handler do after it has
/// told of it; at the end the MFR_ID that is known then, if another one than "EMERSON".
struct Row {
  char const* what;
  char const* script;
  std::string log;
  Fru fru = {};
};

template <std::size_t n>
void expectRows(std::string const& handler, Row const (&rows)[n]) {
  for (Row const& row : rows) {
    SCOPED_TRACE(row.what);
    Slot slot(row.script, row.fru);
    Slot::descriptorIs("stub", "P");
    slot.run(0.95);
    std::string const mfrId(slot.identifier->mfrId().view());
    bool const hasFailed = std::string(row.script).ends_with('x');
    EXPECT_EQ(slot.log + (mfrId == "EMERSON" ? "" : "; mfrId=" + mfrId),
              entered(handler, hasFailed ? "failed" : "succeeded") +
                  (hasFailed ? "; " : "; failCount=0; ") + row.log);
  }
}

TEST(PmbusPoll, endsAsTheAnswerSays) {
  std::string const unsupported =
      "4 S: MFR_ID is not supported; = unsupportedManufacturer; wait 1; mfrId=";
  std::string const supported =
      "3 PowerSupplySlot S: Setting up request for FRU data header; > 58:B0<0100>9";
  std::string const rejected = "4 S not ipmi version 1; = invalidHeader; wait 1";
  Row const rows[] = {
      {"no MFR_ID", "x", "= absent; wait 1; serialNum=; mfrId="},
      {"MFR_ID", ".", supported},
      {"the other MFR_ID", ".", supported + "; mfrId=ARTESYN", {.mfrId = "ARTESYN"}},
      {"a longer MFR_ID", ".", supported, {.mfrId = "EMERSON NETWORK"}},
      {"the count of the MFR_ID does not matter", "0", supported},
      {"a shorter MFR_ID", ".", unsupported, {.mfrId = "EMERSO"}},
      {"an MFR_ID in lower case", ".", unsupported, {.mfrId = "emerson"}},
      {"no header", ".x", "= unreadable; wait 1; serialNum=; mfrId="},
      {"a short header", ".7", "4 S: incomplete read of common header; = unreadable; wait 1"},
      {"a header of 8 bytes", ".8",
       "4 S is ipmi version 1; productInfoBuf=none; 4 state: pollForInsertion; "
       "state=identifySupply; > 58:B0<0108>3"},
      {"a header of version 2", "..", rejected, {.headerVersion = 2}},
      {"a header with a wrong checksum", ".f", rejected},
      {"a header without an area", "..", rejected, {.areaStart = 0}},
  };
  expectRows("PollForInsertion", rows);
}

TEST(PmbusIdentify, endsAsTheAnswerSays) {
  std::string const givenUp = "= unreadable; wait 1; serialNum=; mfrId=";
  auto const next = [](char const* left, char const* operation) {
    return std::string("4 Bytes left to read in product info: ") + left + "; > 58:B0" + operation;
  };
  auto const useless = [](std::string const& hwError) {
    return "fdl=; serialNum=; hwError=" + hwError +
           "; 3 PowerSupplySlot S: Identifier::doSetupCheckSupplyRequest(0)"
           "; state=checkSupply; > 58:B0<0108>3";
  };
  std::string const badArea = "4 S product info checksum is not valid; " + useless("true");
  auto const read = [](std::string const& serial, std::string const& check) {
    return "serialNum=" + serial +
           "; fdl=; hwError=false; 4 S: checking power supply descriptors; 4 S: identified as stub"
           "; fdl=fdl of stub; 3 PowerSupplySlot S: Identifier::doSetupCheckSupplyRequest(1)"
           "; state=checkSupply; > 58:B0" +
           check;
  };
  Row const rows[] = {
      {"third failure", "..xxx", "failCount=3; > 58:B0<0108>3"},
      {"fourth failure", "..xxxx", "failCount=4; " + givenUp},
      {"failures of a chunk", "..xxx.xxxx", "failCount=4; " + givenUp},
      {"a short header", "..1",
       "4 S: incomplete read of product info header: 1 < 2; = unreadable; wait 1"},
      {"an unknown version", "...",
       "3 PowerSupplySlot S: unsupported product info version A; " + useless("false"), kVersionA},
      {"a header of 2 bytes", "..2", "productInfoBuf=16; " + next("14", "<010A>15")},
      {"33 units are 1", "...", "productInfoBuf=8; " + next("6", "<010A>7"), {.unitsSaid = 33}},
      {"0 units", "...", "productInfoBuf=0; " + badArea, {.unitsSaid = 0}},
      {"a wrap after a chunk", "....", next("14", "<010A>15"), {.areaStart = 31, .units = 4}},
      {"the largest area", "................", next("38", "<01DA>17"), {.units = 31}},
      {"a short chunk", "...5", next("9", "<010F>10")},
      {"a third empty chunk", "...000", next("14", "<010A>15")},
      {"a fourth empty chunk", "...0000", givenUp},
      {"empty chunks and failures", "...00xxx0x0", givenUp},
      {"progress between empty chunks", "...0001000", next("13", "<010B>14")},
      {"a wrong checksum", "....", badArea, {.spoilt = 1}},
      {"a supply", "....", read("S1", "<0111>3")},
      {"the serial number's address wraps", "....", read(std::string(1, '\0'), "<0101>2"),
       kWrapped},
      {"a long serial number", ".....", read(kLong.serial, "<0111>17"), kLong},
      {"no serial number", "....", read("", "<0108>3"), {.serial = ""}},
  };
  expectRows("IdentifySupply", rows);
}

TEST(PmbusCheck, endsAsTheAnswerSays) {
  Row const rows[] = {
      {"third failure", "....xxx", "failCount=3; > 58:B0<0111>3"},
      {"fourth failure", "....xxxx", "failCount=4; = unreadable; wait 0.05; serialNum=; mfrId="},
      {"a short answer", "....0",
       "4 S: incomplete read by checkSupplyRequest: 0 < 2; = unreadable; wait 0.8"},
      {"a short answer of the same bytes", "....1",
       "4 S: incomplete read by checkSupplyRequest: 1 < 2; = identified; wait 1"},
      {"the serial number", ".....", "serialNum=S1; = identified; wait 1"},
      {"another serial number", "....f", "serialNum=S0; wait 0.8"},
      {"another long serial number", ".....f", "serialNum=ACCDEFGHIJKLMNOPQRST; wait 0.8", kLong},
      {"the header", ".....", "serialNum=; = identified; wait 1", {.serial = ""}},
      {"another header", "....f", "serialNum=; wait 0.8", {.serial = ""}},
      {"a wrong checksum", ".....", "serialNum=; = invalidChecksum; wait 1", {.spoilt = 1}},
  };
  expectRows("CheckSupply", rows);
}

TEST(PmbusCheck, keepsOrDropsWhatWasRead) {
  Slot kept("....1");
  EXPECT_TRUE(kept.run(0.2).identifier->idprom()->header());
  EXPECT_EQ(kept.identifier->serialNum(), "S1");
  Slot dropped("....xxxx");
  EXPECT_FALSE(dropped.run(0.95).identifier->idprom()->header());

  // A serial number that was cleared while its re-read was loaded.
  Slot cleared("....x.");
  cleared.run(0.2).identifier->serialNumIs("");
  EXPECT_EQ(cleared.run(0.45).identifier->productInfoHeaderBuf()->str(), "S1");
  EXPECT_EQ(cleared.identifier->serialNum(), "");
}

TEST(PmbusPoll, rejectsAnIdentityThatItsTableDropped) {
  Slot slot("..");
  slot.bus->onAnswer = [&] {
    slot.log.clear();
    slot.identifier->mfrIdSupportedIs("EMERSON", !slot.bus->script.empty());
  };
  slot.run();
  EXPECT_EQ(slot.log, entered("PollForInsertion", "succeeded") +
                          "; failCount=0; 4 S: MFR_ID is not supported; = invalidHeader; wait 1");
  EXPECT_EQ(slot.identifier->mfrId(), "EMERSON");
  EXPECT_EQ(slot.supply().reason, "MFR_ID \"EMERSON\" is not supported");
}

TEST(PmbusHandlers, doNothingWithoutATerminalStatusOrBeforeConstruction) {
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
    slot.run(0.2).log.clear();
    (*slot.identifier.*row.handle)();
    slot.identifier->constructedIs(false);
    (*slot.identifier.*row.handle)();
    EXPECT_EQ(slot.log, entered(row.name, "idle"));
  }
}

TEST(PmbusIdentify, asksDescriptorsInOrderUpToTheFirstThatManages) {
  for (int managing = 0; managing < 4; ++managing) {
    Slot slot(".....");
    for (auto const* name : {"alpha", "beta", "gamma"}) {
      Slot::descriptorIs(name, "other");
    }
    // Those after the one that manages the supply would manage it as well.
    int place = 0;
    for (auto const& name : Slot::registry().memberNames()) {
      Slot::descriptorIs(name.charPtr(), place++ < managing ? "other" : "P");
    }
    slot.run(0.2);
    std::string chosen;
    place = 0;
    for (auto walk = Slot::registry().powerSupplyDescriptorIterator(); walk; ++walk, ++place) {
      std::string const own =
          place < managing ? "" : std::string("fdl of ") + walk->name().charPtr();
      EXPECT_EQ(walk->fdl().view(), place > managing ? "not asked" : own);
      chosen = place == managing ? own : chosen;
    }
    EXPECT_EQ(slot.identifier->fdl().view(), chosen);
  }
}

}  // namespace
