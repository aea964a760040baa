// What people and programs are told of a supply: escaping, JSON, suspects, exit status.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "agent/base/Text.h"
#include "agent/report/Report.h"
#include "tests/unit/ipmi_support.h"

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using Agent::Status;
using Agent::Supply;
using Agent::Verdict;
using Kex::String8;
using testing::ElementsAre;

constexpr auto kReplace = nlohmann::json::error_handler_t::replace;

String8 bytes(std::string const& text) { return String8(std::string_view(text)); }

TEST(Text, BytesOutsideAscii) {
  struct {
    std::string bytes, forPeople, json, message;
  } const rows[] = {
      {"a ~", "a ~", "a ~", "a ~"},
      {"\x1F\x7F", R"(\x1F\x7F)", "\x1F\x7F", R"(\x1F\x7F)"},
      {"\0\n"s, R"(\x00\x0A)", "\0\n"s, R"(\x00\x0A)"},
      {"\x80\xBF\xC0\xFF", R"(\x80\xBF\xC0\xFF)", "\xC2\x80\xC2\xBF\xC3\x80\xC3\xBF",
       "\x80\xBF\xC0\xFF"},
  };
  for (auto const& row : rows) {
    EXPECT_EQ(Agent::escaped(row.bytes), row.forPeople);
    EXPECT_EQ(Agent::latin1ToUtf8(row.bytes), row.json);
    EXPECT_EQ(Agent::oneLine(row.bytes), row.message);
  }
}

/// `texts`: the product's fields in their order.
Supply identified(std::array<std::string, 5> const& texts, std::string const& fdl) {
  Supply supply;
  supply.verdict = Verdict::identified;
  supply.mfrId = bytes("EMER\0\0\0"s);
  supply.descriptor = "DS2900";
  supply.product =
      ipmiTest::idpromOf({texts[0], texts[1], texts[2], texts[3], texts[4]})->productInfo();
  supply.hwError = false;
  supply.transactions = 9;
  supply.fdl = bytes(fdl);
  return supply;
}

TEST(Report, JsonInUtf8) {
  Agent::JsonObject object;
  EXPECT_EQ(
      Agent::addSupply(object, identified({"\xE9", "", "", "", "a'\n"}, "\xE9 a'\n")).text(),
      R"({"verdict":"identified","reason":null,"hint":null,"mfrId":"EMER","descriptor":"DS2900",)"
      "\"manufacturerName\":\"\xC3\xA9\","
      R"("productName":"","partNumber":"","productVersion":"","serialNumber":"a'\n",)"
      R"("hwError":false,"suspect":["serialNumber"],"transactions":9,)"
      "\"fdl\":\"\xC3\xA9 a'\\n\"}");
}

// The text of every byte, and of bytes that are no UTF-8, against another writer of JSON.
TEST(Json, Texts) {
  auto const inObject = [](std::string const& text) {
    return R"({"key":)" + nlohmann::json(text).dump(-1, ' ', false, kReplace) + '}';
  };
  for (unsigned byte = 0; byte < 256; ++byte) {
    // At each place of the groups that are looked at together, and behind them.
    for (std::size_t place = 0; place < 18; ++place) {
      std::string text(20, byte % 2 == 0 ? ' ' : '\x7F');
      text[place] = text[19] = static_cast<char>(byte);
      EXPECT_EQ(Agent::JsonObject().add("key", Agent::Latin1{text}).text(),
                inObject(Agent::latin1ToUtf8(text)));
      EXPECT_EQ(Agent::JsonObject().add("key", text).text(), inObject(text));
    }
  }
}

TEST(Json, OtherValues) {
  Agent::JsonObject object;
  object.add("a", 0.1).add("b", 2.0).add("c", 1e-7).add("d", std::uint64_t{0} - 1).add("e", -1);
  object.add("f", true).add("g", std::optional<bool>()).add("h", std::optional("\xC3\xA9"));
  object.add("i", std::vector<std::string_view>{}).add("j", std::vector{"x"sv, "\""sv});
  EXPECT_EQ(object.text(),
            R"({"a":0.1,"b":2.0,"c":1e-07,"d":18446744073709551615,"e":-1,"f":true,"g":null,)"
            "\"h\":\"\xC3\xA9\","
            R"("i":[],"j":["x","\""]})");
}

TEST(Report, SuspectFields) {
  for (char const byte : "'\"\\\n\r\t\x1F\x7F"s + '\0') {
    std::string const text = "x"s + byte;
    std::string const written = byte == '\0' ? "x" : text;
    std::array const all{text, text, text, text, text};
    std::vector<std::string> names;
    for (Agent::Suspect const& suspect : Agent::suspects(identified(all, written))) {
      names.emplace_back(suspect.field);
    }
    EXPECT_THAT(names, ElementsAre("manufacturerName", "productVersion", "serialNumber"));
    EXPECT_THAT(Agent::suspects(identified(all, "not written")), testing::IsEmpty());
  }
  EXPECT_THAT(Agent::suspects(identified({"", "", "", "", "a~ \x80"}, "a~ \x80")),
              testing::IsEmpty());
}

TEST(Report, LinesForPeople) {
  EXPECT_EQ(Agent::supplyLine(1.23456, "PS1", identified({"", "", "", "", "a\n"}, "fdl")),
            "1.235 PS1 identified DS2900 a\\x0A");
  EXPECT_EQ(Agent::supplyLine(0, "PS1", identified({}, "fdl")), "0.000 PS1 identified DS2900 -");
  Supply supply = identified({"", "A", "", "", "\n"}, "");
  supply.verdict = Verdict::unrecognised;
  supply.reason = "nobody knows \"A\"";
  EXPECT_EQ(Agent::supplyLine(10, "PS1", supply), "10.000 PS1 unrecognised nobody knows \"A\"");
  EXPECT_EQ(Agent::explanation(supply),
            "unrecognised: nobody knows \"A\" (MFR_ID \"EMER\", serial number \"\\x0A\")");
}

TEST(ExitStatus, OfAVerdict) {
  for (auto const& row : Hardware::PowerSupplySlot::kVerdicts) {
    Supply supply;
    supply.verdict = row.verdict;
    EXPECT_EQ(Agent::statusOf(supply), row.verdict == Verdict::absent ? Status::absent
                                       : row.verdict == Verdict::identified
                                           ? Status::ok
                                           : Status::notIdentified);
  }
}

TEST(ExitStatus, Precedence) {
  Status const order[] = {Status::ok, Status::absent, Status::notIdentified, Status::failed,
                          Status::usage};
  for (std::size_t i = 0; i < std::size(order); ++i) {
    for (std::size_t j = 0; j < std::size(order); ++j) {
      EXPECT_EQ(Agent::worse(order[i], order[j]), order[std::max(i, j)]);
    }
  }
}

}  // namespace
