// Strings, formatting, keyed collections and traces.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/kex/base/Exception.h"
#include "host/kex/base/Format.h"
#include "host/kex/reference/HashMap.h"
#include "host/kex/trace/Trace.h"
#include "host/kex/type/KexAttr.h"

namespace {

using Kex::String8;
using Kex::U32;
constexpr U32 kNone = 0xFFFFFFFF;

TEST(KexString8, findsPositionsAndParts) {
  struct {
    char const* text;
    U32 start;
    char const* set;
    U32 firstNot;
    U32 lastNot;
    char const* rest;  ///< three bytes from the start on
  } const rows[] = {
      {"", 0, " ", kNone, kNone, ""},       {"", kNone, "", kNone, kNone, ""},
      {"   ", 0, " ", kNone, kNone, "   "}, {"  ab ", 0, " ", 2, kNone, "  a"},
      {"  ab ", 3, " ", 3, 3, "b "},        {"  ab ", 4, " ", kNone, 3, " "},
      {"  ab ", 5, " ", kNone, 3, ""},      {"  ab ", kNone, " ", kNone, 3, ""},
      {"abc", 1, "", 1, 1, "bc"},           {"\xff\x80", 0, "\x80", 0, 0, "\xff\x80"},
  };
  for (auto const& row : rows) {
    String8 const text(row.text);
    EXPECT_EQ(text.posOfNot(row.start, row.set), row.firstNot) << row.text << " " << row.start;
    EXPECT_EQ(text.lastPosOfNot(row.start, row.set), row.lastNot) << row.text << " " << row.start;
    EXPECT_EQ(text.substr(row.start, 3), row.rest) << row.text << " " << row.start;
  }
}

TEST(KexString8, isBytesOfAnyValueByLength) {
  char const* const none = nullptr;
  String8 const withNul(std::string("a\0b", 3));
  EXPECT_EQ(withNul.len(), 3U);
  EXPECT_TRUE(String8() == none);
  EXPECT_FALSE(withNul == none);
  String8 const ascending[] = {none, "Z", "a", withNul, "a\x01", "b", "\x80"};
  EXPECT_TRUE(std::ranges::is_sorted(ascending));
  EXPECT_EQ(std::ranges::adjacent_find(ascending), std::end(ascending));
  // Vectors of FNV-1a, 32 bits.
  EXPECT_EQ(String8("").hash(), 0x811c9dc5U);
  EXPECT_EQ(String8("foobar").hash(), 0xbf9cf968U);
}

// Short ones stand in the string itself, longer ones are shared.
TEST(KexString8, isKeptByCopiesAndMoves) {
  for (std::size_t const length : {0U, 1U, 21U, 22U, 23U, 24U, 254U, 255U, 256U, 5000U}) {
    std::string expected(length, 'x');
    std::ranges::generate(expected,
                          [n = 0]() mutable { return static_cast<char>('a' + n++ % 26); });
    auto text = std::make_unique<String8>(expected);
    EXPECT_EQ(text->len(), length);
    EXPECT_EQ(text->empty(), length == 0);
    EXPECT_EQ(text->charPtr()[length], '\0') << length;
    String8 copy(*text);
    String8 assigned("another text, long enough to be shared");
    assigned = copy;
    String8 const& same = assigned;
    assigned = same;
    text.reset();
    EXPECT_EQ(copy.view(), expected);
    String8 const moved(std::move(copy));
    copy = assigned;
    assigned = "";
    EXPECT_EQ(copy, moved);
    EXPECT_EQ(moved.view(), expected);
  }
}

TEST(KexFormat, fillsAnyLength) {
  for (std::size_t const length : {0U, 4093U, 4094U, 4095U, 100'000U}) {
    std::string const text(length, 'x');
    EXPECT_EQ(Kex::format("<%s>", text.c_str()).view(), "<" + text + ">") << length;
  }
  EXPECT_EQ(Kex::format("%d%% %08.3f %s", -1, 2.5, "%s"), "-1% 0002.500 %s");
}

struct Member : Kex::PtrInterface {
  explicit Member(String8 key) : key_(std::move(key)) {}
  String8 const& key() const { return key_; }
  String8 const key_;
};
struct Map : Kex::HashMap<Member> {
  void add(char const* key) { memberIs(Kex::make<Member>(key)); }
};

/// Keys, and in which order a walk meets them. "liquid" and "costarring" have the same hash.
std::vector<char const*> sortedKeys() {
  std::vector<char const*> keys{"", "a", "costarring", "liquid", "EMERSON", "ARTESYN"};
  std::ranges::sort(
      keys, {}, [](char const* key) { return std::pair(String8(key).hash(), std::string(key)); });
  return keys;
}

TEST(KexHashMap, isWalkedInAnOrderThatDependsOnContentsOnly) {
  auto const expected = sortedKeys();
  auto order = expected;
  do {
    Map map;
    for (char const* const key : order) {
      map.add(key), map.add("gone"), map.add(key);
      EXPECT_EQ(map.memberDel("gone")->key(), "gone");
    }
    std::vector<char const*> met;
    for (auto walk = map.begin(); walk; ++walk) {
      met.push_back(*std::ranges::find(expected, walk->key()));
    }
    ASSERT_EQ(met, expected);
    ASSERT_EQ(map.size(), 6U);
    ASSERT_EQ(map.buckets(), 5U);
    ASSERT_EQ(map.member("gone"), nullptr);
    ASSERT_EQ(map.member("liquid")->key(), "liquid");
  } while (std::ranges::next_permutation(order).found);
}

TEST(KexHashMap, iteratorsOutliveDeletion) {
  struct {
    char const* name;
    std::function<void(Map&, std::vector<char const*> const&)> deletes;  ///< while on the second
    std::size_t next;  ///< index of the key that is met then
  } const rows[] = {
      {"its member", [](Map& m, auto& k) { m.memberDel(k[1]); }, 2},
      {"the next", [](Map& m, auto& k) { m.memberDel(k[2]); }, 3},
      {"the one before", [](Map& m, auto& k) { m.memberDel(k[0]); }, 2},
      {"its member, replaced", [](Map& m, auto& k) { m.add(k[1]); }, 2},
      {"all", [](Map& m, auto&) { m.memberDelAll(); }, 6},
  };
  for (auto const& row : rows) {
    Map map;
    auto const keys = sortedKeys();
    std::ranges::for_each(keys, [&](auto key) { map.add(key); });
    auto walk = map.begin();
    ++walk;
    row.deletes(map, keys);
    EXPECT_EQ(walk->key(), keys[1]) << row.name;
    for (std::size_t i = row.next; i < keys.size(); ++i) {
      ASSERT_TRUE(++walk) << row.name;
      EXPECT_EQ(walk->key(), keys[i]) << row.name;
    }
    EXPECT_FALSE(++walk) << row.name;
    map.add("later");
    EXPECT_FALSE(++walk) << row.name;
    EXPECT_THROW((void)walk->key(), Kex::RangeException) << row.name;
  }
}

TEST(KexTrace, isWrittenOnlyWhereFacilityAndLevelAreOnOrForCoverage) {
  constexpr unsigned kLevel = 3;
  for (unsigned n = 0; n < 16; ++n) {
    SCOPED_TRACE(n);
    U32 const levels = std::array{0U, 1U << kLevel, ~(1U << kLevel), ~0U}[n % 4];
    bool const isFacilityOn = (n & 4) != 0;
    bool const isCovered = (n & 8) != 0;
    bool const isOn = isFacilityOn && (levels >> kLevel & 1) != 0;
    Kex::TraceHandle const early("KexTraceTest", true);
    Kex::TraceHandle const other("KexTraceTes", false);
    Kex::TraceHandle::levelsIs("KexTraceTest", levels);
    Kex::TraceHandle::facilityIs("KexTraceTest", isFacilityOn);
    Kex::TraceHandle const handle("KexTraceTest", true);  // what was set holds for later ones
    std::ostringstream handed;
    Kex::traceSinkIs([&](Kex::TraceRecord const& record) {
      handed << record.source << '/' << record.level << ' ' << record.context << ' '
             << record.function << ':' << record.line << ' ' << record.isEnabled << ' '
             << record.text;
    });
    std::ostringstream coverage;
    Kex::coverageStream_ = isCovered ? &coverage : nullptr;
    int times = 0;
    std::string const line = std::to_string(__LINE__ + 1);
    Kex::trace(handle, kLevel, [&](std::ostream& out) {
      ++times;
      out << 1.0 / 3 << "\n\xC4 " << 123456789012.0;
    });
    Kex::coverageStream_ = nullptr;
    Kex::traceSinkIs({});
    EXPECT_EQ(early.isOn(kLevel), isOn);
    EXPECT_FALSE(other.isOn(kLevel));
    EXPECT_FALSE(early.isOn(32 + kLevel));
    EXPECT_EQ(times, isOn || isCovered ? 1 : 0);
    EXPECT_EQ(coverage.str(), isCovered ? "KexTraceTest:" + line +
                                              " TestBody 3 0.333333333333\\x0A\\xC4 123456789012\n"
                                        : "");
    // Numbers have 12 digits.
    EXPECT_EQ(handed.str(), isOn ? "KexTraceTest/3 <unknown> TestBody:" + line +
                                       " 1 0.333333333333\n\xC4 123456789012"
                                 : "");
    auto const names = Kex::TraceHandle::names();
    EXPECT_EQ(std::ranges::count(names, "KexTraceTest"), 1);
    EXPECT_TRUE(std::ranges::is_sorted(names));
  }
  EXPECT_EQ(std::ranges::count(Kex::TraceHandle::names(), "KexTraceTest"), 0);
}

TEST(KexTrace, neverDisturbsWhatIsTraced) {
  Kex::TraceHandle const handle("KexTraceSafe", true);
  std::string told;
  std::function<void()> then;
  auto const sink = [&, marker = std::string("sink")](Kex::TraceRecord const& record) {
    told += record.text.charPtr();
    if (then) {
      then();
    }
    told += marker;  // it is still there
  };
  struct {
    char const* name;
    std::function<void()> then;
    char const* told;
    char const* toStderr;  ///< by the default sink, of the statement that follows
  } const rows[] = {
      {"throws", [] { throw std::runtime_error("trouble"); }, "onetwo", ""},
      {"replaces itself", [] { Kex::traceSinkIs({}); }, "onesink",
       "KexTraceSafe/0 two\\x00\\x1B\\x7F!\n"},
      {"traces", [&] { Kex::trace(handle, 0, [](std::ostream& out) { out << "inner"; }); },
       "onesinktwosink", ""},
  };
  for (auto const& row : rows) {
    told.clear();
    then = row.then;
    Kex::traceSinkIs(sink);
    testing::internal::CaptureStderr();
    Kex::trace(handle, 0, [](std::ostream& out) {
      out << "one";
      throw std::runtime_error("the text cannot be made");
    });
    Kex::trace(handle, 0, [](std::ostream& out) { out << std::string_view("two\0\x1B\x7F!", 7); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), row.toStderr) << row.name;
    EXPECT_EQ(told, row.told) << row.name;
    Kex::traceSinkIs({});
  }
}

TEST(KexAttrIntrospectionFlags, haveSixBits) {
  EXPECT_EQ(Kex::KexAttrIntrospectionFlags(0x3f).value(), 0x3fU);
  EXPECT_THAT([] { Kex::KexAttrIntrospectionFlags(0x40); },
              testing::Throws<Kex::RangeException>(testing::Property(
                  &Kex::Exception::what,
                  testing::StrEq("KexAttrIntrospectionFlags::value > 0x3f not allowed"))));
}

}  // namespace
