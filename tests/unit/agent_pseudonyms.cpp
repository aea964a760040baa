// Pseudonyms: as long as what they stand for, the same for the same, and never a part of it.
#include <gmock/gmock.h>

#include <set>

#include "agent/recording/Pseudonym.h"

namespace {

using Agent::HashKey;
using Agent::Pseudonyms;
using Ipmi::FieldEncoding;

constexpr HashKey kKey = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

TEST(SipHash, HasTheValuesOfItsAuthors) {
  using namespace std::string_view_literals;
  EXPECT_EQ(Agent::sipHash(kKey, ""), 0x726fdb47dd0e0e31U);
  EXPECT_EQ(Agent::sipHash(kKey, "\0\1\2\3\4\5\6\7\x8\x9\xa\xb\xc\xd\xe"sv), 0xa129ca6149be45e5U);
}

TEST(Pseudonyms, KeepWhatATextLooksLike) {
  Pseudonyms const pseudonyms(kKey);
  EXPECT_EQ(pseudonyms.of(""), "");
  EXPECT_EQ(pseudonyms.of(" -'\\\n"), " -'\\\n");
  std::string const text = "L1330K-04287 x";
  std::string const other = pseudonyms.of(text);
  EXPECT_EQ(pseudonyms.of(text), other);
  EXPECT_NE(Pseudonyms({1}).of(text), other);
  ASSERT_EQ(other.size(), text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    bool const isKept = text[i] == '-' || text[i] == ' ';
    EXPECT_EQ(other[i] == text[i], isKept) << i;
    EXPECT_EQ(std::isdigit(other[i]) != 0, std::isdigit(text[i]) != 0) << i;
    EXPECT_EQ(std::isupper(other[i]) != 0, std::isupper(text[i]) != 0) << i;
    EXPECT_EQ(pseudonyms.of(text.substr(0, i)), other.substr(0, i));
  }
}

TEST(Pseudonyms, AreDifferentForDifferentBytes) {
  Pseudonyms const pseudonyms(kKey);
  for (FieldEncoding const encoding : {FieldEncoding::binary, FieldEncoding::bcdPlus,
                                       FieldEncoding::sixBitAscii, FieldEncoding::eightBit}) {
    std::set<std::string> others;
    for (unsigned byte = 0; byte < 256; ++byte) {
      std::vector<Kex::U8> const stored{'7', static_cast<Kex::U8>(byte)};
      std::vector<Kex::U8> const other = pseudonyms.of(stored, encoding);
      others.emplace(other.begin(), other.end());
    }
    EXPECT_EQ(others.size(), 256) << Ipmi::encodingName(encoding);
  }
}

}  // namespace
