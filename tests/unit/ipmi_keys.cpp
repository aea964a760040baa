// Which keys each descriptor type accepts, and the near misses that none does.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ipmi/Trim.h"
#include "ipmi/model/Filling.h"
#include "ipmi/model/RowChecks.h"
#include "tests/unit/ipmi_support.h"

namespace {

using Emerson::IpmiIdentifier::trim;
using Names = std::vector<std::string>;

enum class Rule { trimmed, exact, prefix };

constexpr auto kPart = &ipmiTest::Fields::partNumber;
constexpr auto kName = &ipmiTest::Fields::productName;

struct {
  char const* type;
  std::string ipmiTest::Fields::*field;
  Rule rule;
  Names keys;
} const kRows[] = {
    {"DS3000", kPart, Rule::trimmed, {"DS3000PE-3-001", "DS3000PE-3-402"}},
    {"DS3000_Reversed", kPart, Rule::trimmed, {"DS3000PE-3", "DS3000PE-3-401"}},
    {"DS3000TE", kPart, Rule::trimmed, {"DS3000TE-3-001", "DS3000TE-3-402"}},
    {"DS3000TE_Reversed", kPart, Rule::trimmed, {"DS3000TE-3", "DS3000TE-3-401"}},
    {"DS3000DC", kPart, Rule::trimmed, {"DS3000DC-3-001", "DS3000DC-3-402"}},
    {"DS3000DC_Reversed", kPart, Rule::trimmed, {"DS3000DC-3", "DS3000DC-3-401"}},
    {"DS2700", kPart, Rule::trimmed, {"DS2700PE-3-001"}},
    {"DS2700_Reversed", kPart, Rule::trimmed, {"DS2700PE-3"}},
    {"DS2700DC", kPart, Rule::trimmed, {"DS2700DC-3-001", "DS2700DC-3-402"}},
    {"DS2700DC_Reversed", kPart, Rule::trimmed, {"DS2700DC-3", "DS2700DC-3-401"}},
    {"DS2900", kPart, Rule::prefix, {"DS2900-3"}},
    {"Emerson760", kName, Rule::prefix, {"DS760SL-3"}},
    {"DS460TwoMicrocontroller", kName, Rule::exact, {"DS460S-3    "}},
    {"DS460TwoMicrocontroller_Reversed", kName, Rule::exact, {"DS460S-3-001"}},
    {"DS460ThreeMicrocontroller", kName, Rule::exact, {"DS460S-3-002"}},
    {"DS460ThreeMicrocontroller_Reversed", kName, Rule::exact, {"DS460S-3-003"}},
    {"DS460DC", kName, Rule::exact, {"DS460SDC-3  "}},
    {"DS460DC_Reversed", kName, Rule::exact, {"DS460SDC-3-001"}},
    {"DS500", kName, Rule::trimmed, {"DS500SPE-3-401"}},
    {"DS500_Reversed", kName, Rule::trimmed, {"DS500SPE-3-402"}},
    {"DS500DC", kName, Rule::trimmed, {"DS500SDC-3-401"}},
    {"DS500DC_Reversed", kName, Rule::trimmed, {"DS500SDC-3-402"}},
    {"DS750", kName, Rule::trimmed, {"DS750PED-3", "DS750PED-3-401"}},
    {"DS750_Reversed", kName, Rule::trimmed, {"DS750PED-3-001", "DS750PED-3-402"}},
    {"DS1100", kName, Rule::trimmed, {"DS1100PED-3", "DS1100PED-3-401"}},
    {"DS1100_Reversed", kName, Rule::trimmed, {"DS1100PED-3-402"}},
    {"DS1100DC", kName, Rule::trimmed, {"DS1100SDC-3-401"}},
    {"DS1100DC_Reversed", kName, Rule::trimmed, {"DS1100SDC-3-402"}},
    {"DS1600", kName, Rule::trimmed, {"DS1600SPE-3-403"}},
    {"DS1600_Reversed", kName, Rule::trimmed, {"DS1600SPE-3-402"}},
};

/// The types that declare a supply with `key` in `field` managed, built in and from files.
Names accepting(std::string ipmiTest::Fields::*field, std::string const& key) {
  static auto const builtIn = ipmiTest::oneOfEach();
  static auto const fromFiles = ipmiTest::oneOfEachFile();
  ipmiTest::Fields fields;
  fields.*field = key;
  auto const idprom = ipmiTest::idpromOf(fields);
  // The FDL of each that knows it.
  auto const known = [&](ipmiTest::Descriptors const& all) {
    std::map<std::string, Kex::String8> texts;
    for (auto const& descriptor : all) {
      descriptor->doGenerateFdl(idprom);
      EXPECT_EQ(descriptor->managed(), !descriptor->fdl().empty());
      if (descriptor->managed()) {
        texts[descriptor->name().charPtr()] = descriptor->fdl();
      }
    }
    return texts;
  };
  auto const accepted = known(builtIn);
  EXPECT_EQ(known(fromFiles), accepted) << key;
  Names names;
  for (auto const& [name, fdl] : accepted) {
    names.push_back(name);
  }
  return names;
}

TEST(IpmiKeys, everyTypeHasARow) {
  for (std::string_view const type : Emerson::IpmiIdentifier::kTypeNames) {
    EXPECT_TRUE(std::ranges::any_of(kRows, [&](auto const& row) { return row.type == type; }))
        << type << " has no row";
  }
}

TEST(IpmiKeys, onlyTheRightTypeAccepts) {
  for (auto const& row : kRows) {
    for (auto const& key : row.keys) {
      bool const trims = row.rule == Rule::trimmed;
      bool const continues = row.rule == Rule::prefix;
      std::pair<std::string, bool> const variants[] = {
          {key, true},
          {"d" + key.substr(1), false},
          {"Ds" + key.substr(2), false},
          {key.substr(1), false},
          {key.substr(0, key.size() - 1), false},
          {key + "X", continues},
          {key + "\n", continues},
          {key + '\0', continues},
          {key + " ", continues || trims},
          {" " + key, trims},
          {"\n" + key, false},
          {"\v " + key, false},
          {"\t  " + key + " \t", trims},
          {key.substr(0, 4) + " " + key.substr(4), false},
      };
      for (auto const& [variant, isAccepted] : variants) {
        EXPECT_EQ(accepting(row.field, variant), isAccepted ? Names{row.type} : Names{})
            << "'" << variant << "'";
        if (trims) {
          EXPECT_EQ(trim(Kex::String8(variant)).view() == key, isAccepted) << "'" << variant << "'";
        }
      }
      EXPECT_EQ(accepting(row.field == kPart ? kName : kPart, key), Names{})
          << key << " in the other field";
    }
  }
}

TEST(IpmiKeys, noTypeAcceptsTheKeysBetween) {
  for (auto const* key : {"", " ", " \t \t", "DS460S-3", "DS460S-3  ", "DS460SDC-3",
                          "DS1600SPE-3-401", "DS2700PE-3-402", "DS1100PED-3-001", "DS460S-3-004"}) {
    EXPECT_EQ(accepting(kName, key), Names{}) << key;
    EXPECT_EQ(accepting(kPart, key), Names{}) << key;
  }
  EXPECT_EQ(trim(" \t "), "");
}

// What the table of models would be refused for.
namespace refused {

using namespace Emerson::IpmiIdentifier;
using namespace RowChecks;

constexpr Family kFamily{
    .keyField = KeyField::partNumber,
    .rule = MatchRule::trimmedEquality,
    .keyLengths = {2, 3},
    .fill = nullptr,
    .isComplete =
        Filling<&Model::api, MayBeEmpty<&Model::modelName>{}, &Model::fanSpeed>::isComplete};
constexpr Family kByName{.keyField = KeyField::productName,
                         .rule = MatchRule::trimmedEquality,
                         .fill = nullptr,
                         .isComplete = nullptr};

/// A row without fault, once `change` has been made.
consteval Model row(auto change) {
  Model model{.family = &kFamily, .keys = {"AB", "ABC"}, .api = "x", .fanSpeed = 1};
  change(model);
  return model;
}
constexpr Model kGood = row([](Model&) {});
constexpr Model kReversed = row([](Model& model) {
  model.id = ModelId::DS3000_Reversed;
  model.airflow = Airflow::backToFront;
  model.keys = {"XY"};
});

static_assert(inDeclaredOrder(std::array{kGood, kReversed}));
static_assert(!inDeclaredOrder(std::array{kReversed, kGood}));
static_assert(keysReachable(std::array{kGood, kReversed}));
static_assert(!keysReachable(std::array{kGood, row([](Model& model) { model.keys = {}; })}));
static_assert(!keysReachable(std::array{row([](Model& model) { model.keys = {"AB "}; })}));
static_assert(!keysReachable(std::array{row([](Model& model) { model.keys = {"AB", "\tX"}; })}));
static_assert(overlap(MatchRule::prefix, "AB", MatchRule::exactLength, "ABC"));
static_assert(overlap(MatchRule::exactLength, "ABC", MatchRule::prefix, "AB"));
static_assert(!overlap(MatchRule::prefix, "ABC", MatchRule::exactLength, "AB"));
static_assert(!overlap(MatchRule::exactLength, "AB", MatchRule::prefix, "ABC"));
static_assert(overlap(MatchRule::exactLength, "AB ", MatchRule::trimmedEquality, "AB"));
static_assert(overlap(MatchRule::exactLength, "AB ", MatchRule::exactLength, "AB "));
static_assert(!overlap(MatchRule::exactLength, "AB ", MatchRule::exactLength, "AB"));
static_assert(!overlap(MatchRule::prefix, "", MatchRule::prefix, "AB"), "no key");
static_assert(!overlap(MatchRule::prefix, "AB", MatchRule::prefix, ""), "no key");
static_assert(keysUnique(std::array{kGood, kReversed}));
static_assert(!keysUnique(std::array{kGood, kReversed, kReversed}));
static_assert(!keysUnique(std::array{row([](Model& model) { model.keys = {"AB", "AB"}; })}));
static_assert(keysUnique(std::array{kGood, row([](Model& model) { model.family = &kByName; })}),
              "the same text in another field");
static_assert(keysHaveTheirFamilysLength(std::array{kGood, kReversed}));
static_assert(!keysHaveTheirFamilysLength(std::array{kGood, row([](Model& model) {
                                                       model.keys = {"AB", "ABCD"};
                                                     })}));
static_assert(keysHaveTheirFamilysLength(std::array{row([](Model& model) {
                model.family = &kByName;
                model.keys = {"ABCD"};
              })}),
              "a family of keys of any length");
static_assert(columnsAreThoseOfTheTemplates(std::array{kGood, kReversed}));
static_assert(columnsAreThoseOfTheTemplates(std::array{
    row([](Model& model) { model.modelName = "x"; })}));
static_assert(!columnsAreThoseOfTheTemplates(std::array{
    kGood, row([](Model& model) { model.api = ""; })}));
static_assert(!columnsAreThoseOfTheTemplates(std::array{
    row([](Model& model) { model.fanSpeed = 0; })}));
static_assert(!columnsAreThoseOfTheTemplates(std::array{
    row([](Model& model) { model.extraSensorBlock = "x"; })}));
static_assert(!columnsAreThoseOfTheTemplates(std::array{
    row([](Model& model) { model.sensor2Target = 1; })}));
static_assert(reversedNamesBlowBackToFront(std::array{kGood, kReversed}));
static_assert(!reversedNamesBlowBackToFront(std::array{
    kGood, row([](Model& model) { model.airflow = Airflow::backToFront; })}));
static_assert(isStemOf("dS460X", "DS460X") && !isStemOf("DS460X", "DS460X"));
static_assert(!isStemOf("dS460", "DS460X") && !isStemOf("dS460Y", "DS460X"));

}  // namespace refused

}  // namespace
