// Strings, formatting, keyed collections, traces and exceptions.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "host/kex/Builtin.h"
#include "host/kex/Format.h"
#include "host/kex/GenericIf.h"
#include "host/kex/HashMap.h"
#include "host/kex/KexAttr.h"
#include "host/kex/Name.h"
#include "host/kex/Trace.h"

namespace {

using Kex::Ptr;
using Kex::String8;
using Kex::U32;
constexpr U32 kNone = String8::npos;

TEST(KexString8, positionsAndParts) {
  struct {
    char const* text;
    U32 start;
    char const* set;
    U32 firstNot;
    U32 lastNot;
  } const positions[] = {
      {"", 0, " ", kNone, kNone},
      {"", kNone, "", kNone, kNone},
      {"   ", 0, " ", kNone, kNone},
      {"  ab ", 0, " ", 2, kNone},
      {"  ab ", kNone, " ", kNone, 3},
      {"  ab ", 3, " ", 3, 3},
      {"  ab ", 4, " ", kNone, 3},
      {"  ab ", 99, " ", kNone, 3},
      {"abc", 1, "", 1, 1},
      {"\xff\x80", 0, "\x80", 0, 0},
      {"\xff\x80", kNone, "\x80", kNone, 0},
  };
  for (auto const& row : positions) {
    String8 const text(row.text);
    EXPECT_EQ(text.posOfNot(row.start, row.set), row.firstNot) << row.text << " " << row.start;
    EXPECT_EQ(text.lastPosOfNot(row.start, row.set), row.lastNot) << row.text << " " << row.start;
  }
  struct {
    U32 position;
    U32 length;
    char const* part;
  } const parts[] = {
      {0, 3, "abc"}, {0, kNone, "abc"}, {1, 1, "b"}, {2, 9, "c"},      {3, 1, ""},
      {4, 1, ""},    {kNone, 1, ""},    {1, 0, ""},  {1, kNone, "bc"},
  };
  for (auto const& row : parts) {
    EXPECT_EQ(String8("abc").substr(row.position, row.length), row.part) << row.position;
  }
}

TEST(KexString8, isBytesOfAnyValueByLength) {
  char const* const none = nullptr;
  EXPECT_TRUE(String8(none).empty());
  String8 const withNul(std::string("a\0b", 3));
  EXPECT_EQ(withNul.len(), 3U);
  EXPECT_STREQ(withNul.charPtr(), "a");
  EXPECT_NE(withNul, String8("a"));
  EXPECT_LT(String8("a"), withNul);
  EXPECT_LT(String8("a"), String8("\x80"));  // bytes are unsigned
  EXPECT_LT(String8("Z"), String8("a"));
  // Vectors of FNV-1a, 32 bits.
  EXPECT_EQ(String8("").hash(), 0x811c9dc5U);
  EXPECT_EQ(String8("a").hash(), 0xe40c292cU);
  EXPECT_EQ(String8("foobar").hash(), 0xbf9cf968U);
}

TEST(KexFormat, fillsAnyLength) {
  for (std::size_t const length : {0U, 1U, 4094U, 4095U, 4096U, 4097U, 100'000U}) {
    std::string const text(length, 'x');
    EXPECT_EQ(Kex::format("<%s>", text.c_str()).view(), "<" + text + ">") << length;
  }
  EXPECT_EQ(Kex::format("%d%% %08.3f %s", -1, 2.5, "%s"), "-1% 0002.500 %s");
}

class Member : public Kex::PtrInterface {
 public:
  explicit Member(String8 key) : key_(std::move(key)) {}
  String8 const& key() const { return key_; }

 private:
  String8 key_;
};
using Map = Kex::HashMap<Member>;

std::vector<std::string> keysOf(Map const& map) {
  std::vector<std::string> keys;
  for (auto walk = map.begin(); walk; ++walk) {
    keys.emplace_back(walk->key().view());
  }
  return keys;
}

// "liquid" and "costarring" have the same hash.
std::vector<std::string> const kKeys{"", "a", "costarring", "liquid", "EMERSON", "ARTESYN"};

TEST(KexHashMap, orderDependsOnTheContentsOnly) {
  ASSERT_EQ(String8("liquid").hash(), String8("costarring").hash());
  auto expected = kKeys;
  std::ranges::sort(expected, {}, [](std::string const& key) {
    return std::pair(String8(key.c_str()).hash(), key);
  });
  auto order = kKeys;
  std::ranges::sort(order);
  do {
    Map map;
    for (auto const& key : order) {
      map.memberIs(Kex::make<Member>(String8(key.c_str())));
      map.memberIs(Kex::make<Member>(String8("gone")));
      map.memberIs(Kex::make<Member>(String8(key.c_str())));  // replaces
      map.memberDel("gone");
    }
    ASSERT_EQ(keysOf(map), expected);
    ASSERT_EQ(map.size(), 6U);
    ASSERT_EQ(map.buckets(), 5U);
  } while (std::ranges::next_permutation(order).found);
}

TEST(KexHashMap, findsReplacesAndLetsGo) {
  Map map;
  auto const first = Kex::make<Member>("liquid");
  auto const second = Kex::make<Member>("liquid");
  map.memberIs(first);
  EXPECT_EQ(map.member("costarring"), nullptr);
  EXPECT_EQ(map.memberDel("costarring"), nullptr);
  map.memberIs(first);
  EXPECT_EQ(map.member("liquid"), first);
  map.memberIs(second);
  EXPECT_EQ(map.member("liquid"), second);
  EXPECT_EQ(first->refCount(), 1U);
  EXPECT_EQ(map.memberDel("liquid"), second);
  EXPECT_EQ(map.size(), 0U);
  EXPECT_FALSE(map.begin());
}

TEST(KexHashMap, anIteratorOutlivesDeletion) {
  struct {
    char const* name;
    std::function<void(Map&, std::vector<std::string> const&)> deletes;  ///< while on the second
    std::vector<std::size_t> rest;  ///< what the walk still meets
  } const rows[] = {
      {"its member", [](Map& m, auto& k) { m.memberDel(k[1].c_str()); }, {2, 3, 4, 5}},
      {"the next", [](Map& m, auto& k) { m.memberDel(k[2].c_str()); }, {3, 4, 5}},
      {"the one before", [](Map& m, auto& k) { m.memberDel(k[0].c_str()); }, {2, 3, 4, 5}},
      {"all", [](Map& m, auto&) { m.memberDelAll(); }, {}},
      {"its member, for another of the key",
       [](Map& m, auto& k) { m.memberIs(Kex::make<Member>(k[1].c_str())); },
       {2, 3, 4, 5}},
  };
  for (auto const& row : rows) {
    Map map;
    for (auto const& key : kKeys) {
      map.memberIs(Kex::make<Member>(key.c_str()));
    }
    auto const keys = keysOf(map);
    auto walk = map.begin();
    ++walk;
    row.deletes(map, keys);
    EXPECT_EQ(walk->key().view(), keys[1]) << row.name;
    for (std::size_t const index : row.rest) {
      ++walk;
      ASSERT_TRUE(walk) << row.name;
      EXPECT_EQ(walk->key().view(), keys[index]) << row.name;
    }
    EXPECT_FALSE(++walk) << row.name;
    EXPECT_THROW((void)walk->key(), Kex::RangeException) << row.name;
  }
}

/// Counts how often it is formatted.
struct Formatted {
  int& times;
};
std::ostream& operator<<(std::ostream& out, Formatted const& part) {
  ++part.times;
  return out << "f";
}

TEST(KexTrace, isFormattedOnlyForLevelsThatAreOnOrForCoverage) {
  constexpr unsigned kLevel = 3;
  struct {
    U32 levels;
    bool isCovered;
    bool isHanded;  ///< to the sink
  } const rows[] = {
      {0, false, false},
      {1U << kLevel, false, true},
      {~(1U << kLevel), false, false},
      {~U32{0}, false, true},
      {0, true, false},
      {1U << kLevel, true, true},
  };
  Kex::TraceHandle const handle("KexTraceTest", false);
  std::vector<Kex::TraceRecord> handed;
  Kex::traceSinkIs([&](Kex::TraceRecord const& record) { handed.push_back(record); });
  for (auto const& row : rows) {
    Kex::TraceHandle::levelsIs("KexTraceTest", row.levels);
    std::ostringstream coverage;
    Kex::coverageStream_ = row.isCovered ? &coverage : nullptr;
    int times = 0;
    unsigned const line = __LINE__ + 1;
    Kex::trace({handle, kLevel}, Formatted{times}, 1.0 / 3, ' ', 123456789012.0);
    Kex::coverageStream_ = nullptr;
    auto const name = testing::Message() << row.levels << ' ' << row.isCovered;
    EXPECT_EQ(times, row.isHanded || row.isCovered ? 1 : 0) << name;
    ASSERT_EQ(handed.size(), row.isHanded ? 1U : 0U) << name;
    if (row.isHanded) {
      EXPECT_EQ(handed[0].text, "f0.333333333333 123456789012");  // precision 12
      EXPECT_STREQ(handed[0].context, "<unknown>");
      EXPECT_STREQ(handed[0].source, "KexTraceTest");
      EXPECT_EQ(handed[0].function, "TestBody");
      EXPECT_EQ(handed[0].line, line);
      EXPECT_EQ(handed[0].level, kLevel);
      EXPECT_TRUE(handed[0].isEnabled);
    }
    handed.clear();
    EXPECT_EQ(coverage.str().find("f0.333333333333") != std::string::npos, row.isCovered) << name;
  }
  Kex::traceSinkIs({});
}

TEST(KexTrace, levelsAreSetByNameForHandlesOfAnyTime) {
  Kex::TraceHandle const early("KexTraceNames", false);
  Kex::TraceHandle const other("KexTraceNamesNot", false);
  Kex::TraceHandle const all("KexTraceAllOn", true);
  Kex::TraceHandle::levelsIs("KexTraceNames", 0x80000002);
  Kex::TraceHandle const late("KexTraceNames", false);
  for (unsigned level = 0; level < 32; ++level) {
    bool const isOn = level == 1 || level == 31;
    EXPECT_EQ(early.isOn(level), isOn) << level;
    EXPECT_EQ(late.isOn(level), isOn) << level;
    EXPECT_FALSE(other.isOn(level)) << level;
    EXPECT_TRUE(all.isOn(level)) << level;
  }
}

TEST(KexExceptions, haveTheirClassIdentifierAndText) {
  using Kex::Exception;
  using Kex::GenericIf;
  String8 const text = "no such thing";
  struct {
    std::function<void()> throws;
    std::function<bool(Exception const&)> isOfClass;
    U32 id;
    char const* text;
  } const rows[] = {
      {[&] { Kex::throwRangeException(text); },
       [](auto& e) { return dynamic_cast<Kex::RangeException const*>(&e) != nullptr; }, 1,
       "no such thing"},
      {[&] { GenericIf::throwTypeException(text); },
       [](auto& e) { return dynamic_cast<Kex::TypeException const*>(&e) != nullptr; }, 2,
       "no such thing"},
      {[&] { GenericIf::throwConstException(text); },
       [](auto& e) { return dynamic_cast<Kex::ConstException const*>(&e) != nullptr; }, 3,
       "no such thing"},
      {[&] { GenericIf::throwOpNotSupportedException("attr", 129, true); },
       [](auto& e) {
         auto const* const op = dynamic_cast<Kex::OpNotSupportedException const*>(&e);
         return op != nullptr && op->code() == 129 && op->isCollection();
       },
       4, "attr"},
      {[&] { GenericIf::throwUnknownArgException("DS500DC"); },
       [](auto& e) { return dynamic_cast<Kex::UnknownArgException const*>(&e) != nullptr; }, 5,
       "DS500DC"},
      {[&] { GenericIf::throwBadIndexAttrException("attr"); },
       [](auto& e) { return dynamic_cast<Kex::BadIndexAttrException const*>(&e) != nullptr; }, 6,
       "attr"},
      {[&] {
         Kex::cannotConvert(text.charPtr(), text.charPtr() + 7, Kex::Builtin<bool>::_fwkType());
       },
       [](auto&) { return true; }, 12, "cannot convert 'no such' to bool"},
      {[] { Kex::KexAttrIntrospectionFlags(0x40); },
       [](auto& e) { return dynamic_cast<Kex::RangeException const*>(&e) != nullptr; }, 1,
       "KexAttrIntrospectionFlags::value > 0x3f not allowed"},
  };
  for (auto const& row : rows) {
    try {
      row.throws();
      ADD_FAILURE() << row.text << ": nothing thrown";
    } catch (Exception const& error) {
      EXPECT_EQ(error.id(), row.id) << row.text;
      EXPECT_STREQ(error.what(), row.text);
      EXPECT_TRUE(row.isOfClass(error)) << row.text;
      EXPECT_TRUE(error.isUserError());
    }
  }
  EXPECT_EQ(Kex::KexAttrIntrospectionFlags(0x3f).value(), 0x3fU);
}

}  // namespace
