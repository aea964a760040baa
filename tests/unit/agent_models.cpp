// Model files: what is refused and where, who would take whose supplies, near misses, reading
// again.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "agent/base/JsonDocument.h"
#include "agent/models/ModelFile.h"
#include "agent/models/ModelSet.h"
#include "agent/models/NearMiss.h"
#include "host/kex/generic/Holder.h"
#include "host/kex/type/KexType.h"
#include "tests/unit/ipmi_support.h"

namespace {

using namespace Agent;
using Lines = std::vector<std::string>;
namespace fs = std::filesystem;

/// A whole file, of which `replaced` is another.
std::string fileWith(std::string const& replaced = "", std::string const& by = "") {
  std::string text = R"~({"keyField": "partNumber", "rule": "trimmedEquality",
    "fdl": ["FruFactoryIds: PowerSupply", "", "fru.api = 'A'", "fru.modelName = '${modelName}'",
            "fru.mfgName = '${manufacturerName}'", "fru.serialNum = '${serialNumber}'",
            "fru.capacity = 900", "note = '100 % of $$5'", "${sensors}", "f1 = fru.newFan( 1 )"],
    "models": [{"name": "XS900", "keys": ["XS900-1"],
                "columns": {"modelName": "QLX-900", "sensors": ["ts1 = 1", ""]}}]})~";
  std::size_t const at = text.find(replaced);
  EXPECT_NE(at, std::string::npos) << replaced;
  return text.replace(at, replaced.size(), by);
}

std::string whyRefused(std::string const& text) {
  try {
    parseModels(parseJson(text), "file");
  } catch (UsageError const& error) {
    return error.what();
  }
  return "";
}

Models modelsOf(std::string const& text) { return parseModels(parseJson(text), "file"); }

TEST(ModelFile, fillsFieldsAndColumns) {
  auto const descriptor = newDescriptor(modelsOf(fileWith()).front());
  descriptor->doGenerateFdl(ipmiTest::idpromOf(
      {.manufacturer = "M%s", .partNumber = "\tXS900-1 ", .serialNumber = std::string("S\0X", 3)}));
  EXPECT_TRUE(descriptor->managed());
  EXPECT_EQ(descriptor->fdl().view(),
            "FruFactoryIds: PowerSupply\n\nfru.api = 'A'\nfru.modelName = 'QLX-900'\n"
            "fru.mfgName = 'M%s'\nfru.serialNum = 'S'\nfru.capacity = 900\n"
            "note = '100 % of $5'\nts1 = 1\n\nf1 = fru.newFan( 1 )\n");
}

TEST(ModelFile, refusesWithPathAndReason) {
  struct {
    std::string replaced;
    std::string by;
    std::string why;  ///< begins so
  } const rows[] = {
      {"\"partNumber\"", "\"serial\"", "keyField: \"serial\" is none of partNumber, productName"},
      {"\"trimmedEquality\"", "7", "rule: 7 is no string"},
      {"\"rule\"", "\"rules\"", "the document: unknown key \"rules\""},
      {"FruFactoryIds: PowerSupply", "FruFactoryIds: Fan",
       "fdl: with the columns of models[0], it "
       "does not begin with"},
      {"\"fru.api = 'A'\", ", "", "fdl: with the columns of models[0], it has no line fru.api"},
      {"fru.api = 'A'", "fru.api = ''", "fdl: with the columns of models[0], it assigns \"''\""},
      {"\"fru.api = 'A'\"", "\"fru.api = 'A'\", \"fru.api = 'B'\"",
       "fdl: with the columns of models[0], it has more than one line fru.api"},
      {"\"QLX-900\"", "\"Q'X\"", "fdl: with the columns of models[0], it assigns \"'Q'X'\""},
      {"= 900", "= 9OO", "fdl: with the columns of models[0], it assigns \"9OO\" to fru.capacity"},
      {"f1 = fru.newFan( 1 )", "", "fdl: with the columns of models[0], it makes 0 fans"},
      {"${serialNumber}", "${serial}", "fdl[5]: \"serial\" is neither a field nor a column"},
      {"'${serialNumber}'", "'$serial'", "fdl[5]: \"$serial'\" begins with a dollar sign"},
      {"\"${sensors}\"", "\"x ${sensors}\"", "fdl[8]: the column \"sensors\" has whole lines"},
      {"\"${sensors}\", ", "", "models[0].columns.sensors: no line of the FDL has a place for it"},
      {"\"modelName\": \"QLX-900\"", "\"modelName\": \"QLX-900\", \"serialNumber\": \"1\"",
       "models[0].columns.serialNumber: is the name of a field"},
      {"\"QLX-900\"", "\"a\\nb\"", "models[0].columns.modelName: \"a\\x0Ab\" has other characters"},
      {"\"QLX-900\"", "\"FILL_IN\"", "models[0].columns.modelName: \"FILL_IN\" is still to be"},
      {"\"QLX-900\"", "1.5", "models[0].columns.modelName: 1.5 is no whole number"},
      {"\"QLX-900\"", "null", "models[0].columns.modelName: null is no string"},
      {"\"XS900\"", "\"X S\"", "models[0].name: \"X S\" is not made of letters"},
      {"\"XS900\"", "\"\"", "models[0].name: \"\" is not made of letters"},
      {"[\"XS900-1\"]", "[]", "models[0].keys: has 0 elements"},
      {"\"XS900-1\"", "\" \\t\"", "models[0].keys[0]: \" \\x09\" has not 1 to 63"},
      {"\"XS900-1\"", "\"XS900-1 \"", "models[0].keys[0]: \"XS900-1 \" begins or ends with blanks"},
      {"\"XS900-1\"", "\"A\", \"A\"", "models[0].keys[1]: \"A\" is there twice"},
      {"\"XS900-1\"", "\"\\u0100\"", "models[0].keys[0]: \"\\u0100\" has a character above"},
      {"\"XS900-1\"", '"' + std::string(64, 'k') + '"', "models[0].keys[0]: \"kkk"},
      {"\"name\"", "\"keyTrace\": \"all\", \"name\"", "models[0].keyTrace: \"all\" is none of"},
  };
  for (auto const& row : rows) {
    std::string const why = whyRefused(fileWith(row.replaced, row.by));
    EXPECT_TRUE(why.starts_with(row.why)) << row.by << ": " << why;
  }
}

/// A folder of model files, and what a set of them does.
class ModelSets : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(folder);
    for (auto const& descriptor : ipmiTest::oneOfEach()) {
      registry().powerSupplyDescriptorIs(descriptor);
    }
  }
  void TearDown() override {
    for (auto const& name : registry().memberNames()) {
      registry().powerSupplyDescriptorDel(name);
    }
    fs::remove_all(folder);
  }
  static Ipmi::SupportedPowerSupplyRegistry& registry() {
    return *Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  }
  void write(std::string const& name, std::string const& text) const {
    std::ofstream(folder / name) << text;
  }
  /// A file with one model.
  static std::string model(std::string const& name, std::string const& rule,
                           std::string const& key) {
    std::string text = fileWith("XS900\"", name + '"');
    text.replace(text.find("XS900-1"), 7, key);
    return text.replace(text.find("trimmedEquality"), 15, rule);
  }
  ModelSet set() const { return ModelSet({.paths = {folder.string()}}); }
  static Lines names(ModelSet const& set) {
    Lines names;
    for (auto const& descriptor : set.descriptors()) {
      names.push_back(descriptor->model()->name);
    }
    return names;
  }
  static Lines whys(ModelSet const& set) {
    Lines whys;
    for (auto const& refusal : set.refusals()) {
      whys.push_back(fs::path(refusal.file).filename().string() + ": " + refusal.why);
    }
    return whys;
  }

  fs::path const folder =
      fs::path(testing::TempDir()) / ("model-sets-" + std::to_string(::getpid()));
};

TEST_F(ModelSets, noModelTakesAnothersSupplies) {
  struct {
    std::string name;
    std::string rule;
    std::string key;
    std::string why;  ///< begins so; empty: it fits
  } const rows[] = {
      {"B", "trimmedEquality", "B-2", ""},
      {"DS2900", "trimmedEquality", "B-2", "models[0].name: there is a DS2900 already"},
      {"A", "trimmedEquality", "B-2", "models[0].name: there is a A of "},
      {"B", "trimmedEquality", "A-1", "models[0].keys[0]: \"A-1\" is accepted by A of "},
      {"B", "exactLength", "A-1  ", "models[0].keys[0]: \"A-1  \" is accepted by A of "},
      {"B", "prefix", "A", "models[0].keys: they accept \"A-1\", a key of A of "},
      {"B", "prefix", "DS2900-3-9", "models[0].keys[0]: \"DS2900-3-9\" is accepted by DS2900"},
      {"B", "trimmedEquality", "DS1100PED-3",
       "models[0].keys[0]: \"DS1100PED-3\" is accepted by "
       "DS1100"},
      {"B", "exactLength", "DS460S-3-001", "models[0].keys[0]: \"DS460S-3-001\" is accepted by "},
      {"B", "exactLength", "DS460S-3", ""},
  };
  write("a.json", model("A", "trimmedEquality", "A-1"));
  for (auto const& row : rows) {
    write("b.json", model(row.name, row.rule, row.key));
    ModelSet const all = set();
    if (row.why.empty()) {
      EXPECT_EQ(names(all), (Lines{"A", row.name})) << row.key;
      EXPECT_EQ(whys(all), Lines()) << row.key;
    } else {
      EXPECT_EQ(names(all), Lines{"A"}) << row.key;
      ASSERT_EQ(whys(all).size(), 1U) << row.key;
      EXPECT_TRUE(whys(all).front().starts_with("b.json: " + row.why)) << whys(all).front();
    }
    for (auto const& descriptor : all.descriptors()) {
      registry().powerSupplyDescriptorDel(descriptor->name());
    }
  }
}

TEST_F(ModelSets, areAskedBehindTheBuiltInOnes) {
  write("a.json", model("A", "prefix", "DS2900"));
  ModelSet const all = set();
  ASSERT_EQ(names(all), Lines{"A"});
  Lines order;
  for (auto walk = registry().powerSupplyDescriptorIterator(); walk; ++walk) {
    order.emplace_back(walk->name().charPtr());
  }
  EXPECT_EQ(order.size(), 31U);
  EXPECT_EQ(order.back(), "A");
  EXPECT_EQ(registry().memberNames().size(), 31U);

  // An object of its type is made by name, as one of any type is.
  auto const arguments = Kex::make<Kex::GenericIf::List_>();
  arguments->append(Kex::holderOf(Kex::Name("other")));
  auto const* const type = Kex::KexType::typeNode("ModelFiles::A");
  ASSERT_NE(type, nullptr);
  EXPECT_TRUE(type->isA(Ipmi::SupportedPowerSupplyDescriptorBase::_fwkType()));
  EXPECT_EQ(type->attributeQ().size(), type->base()->attributeQ().size());
  auto const made =
      Kex::dynamicCast<ModelDescriptor>(type->genericIf(arguments.ptr(), false)->castTo(*type));
  EXPECT_TRUE(Question(Descriptors::KeyField::partNumber, "DS2900X").isKnownTo(*made));
}

TEST_F(ModelSets, areReadAgain) {
  write("a.json", model("A", "trimmedEquality", "A-1"));
  write("b.json", model("B", "trimmedEquality", "B-1"));
  ModelSet all = set();
  auto const isKnown = [&](std::string const& key) {
    Question const question(Descriptors::KeyField::partNumber, key);
    return std::ranges::any_of(
        all.descriptors(), [&](auto const& descriptor) { return question.isKnownTo(*descriptor); });
  };
  write("a.json", "{");
  write("b.json", model("B", "trimmedEquality", "B-2"));
  write("c.json", model("C", "trimmedEquality", "B-1"));
  all.reload();
  EXPECT_EQ(names(all), (Lines{"A", "B", "C"}));
  EXPECT_EQ(whys(all), Lines{"a.json: no JSON from column 2 on; its models stay as they were"});
  EXPECT_TRUE(isKnown("A-1") && isKnown("B-1") && isKnown("B-2"));
  fs::remove(folder / "a.json");
  all.reload();
  EXPECT_EQ(names(all), (Lines{"B", "C"}));
  EXPECT_EQ(registry().memberNames().size(), 32U);
}

TEST_F(ModelSets, tellNearMisses) {
  write("a.json", model("A", "trimmedEquality", "Xy-1"));
  ModelSet const all = set();
  struct {
    ipmiTest::Fields fields;
    char const* descriptor;
    std::string miss;  ///< empty: far
  } const rows[] = {
      {{.productName = "DS2900-3"}, "DS2900", "the other field: DS2900-3"},
      {{.partNumber = " DS2900-3"}, "DS2900", "other blanks: DS2900-3"},
      {{.productName = "DS460S-3"}, "DS460TwoMicrocontroller", "other blanks: DS460S-3    "},
      {{.partNumber = "ds2900-3"}, "DS2900", "another case: DS2900-3"},
      {{.partNumber = "XY-1"}, "A", "another case: Xy-1"},
      {{.productName = "DS110PED-3"}, "DS1100", "another character: DS1100PED-3"},
      {{.productName = "DS1100PEDX-3"}, "DS1100", "another character: DS1100PED-3"},
      {{.productName = "DS1100PEX-3"}, "DS1100", "another character: DS1100PED-3"},
      {{.productName = "DS1100XXX-3"}, "DS1100", ""},
  };
  for (auto const& row : rows) {
    NearMisses const misses(*ipmiTest::idpromOf(row.fields)->productInfo());
    auto const descriptor = Kex::dynamicCast<Ipmi::SupportedPowerSupplyDescriptorBase>(
        registry().member(Kex::Name(row.descriptor)));
    auto const miss = misses.of(*descriptor);
    EXPECT_EQ(miss ? std::string(miss->difference) + ": " + miss->text : "", row.miss);
  }
}

}  // namespace
