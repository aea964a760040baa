// SipHash-2-4, a keyed hash of short texts.
#include "agent/base/SipHash.h"

#include <bit>
#include <cstddef>

namespace Agent {

namespace {

using Kex::U64;

/// The state of the hash.
struct Words {
  U64 v0;
  U64 v1;
  U64 v2;
  U64 v3;

  void round() {
    v0 += v1;
    v1 = std::rotl(v1, 13) ^ v0;
    v0 = std::rotl(v0, 32);
    v2 += v3;
    v3 = std::rotl(v3, 16) ^ v2;
    v0 += v3;
    v3 = std::rotl(v3, 21) ^ v0;
    v2 += v1;
    v1 = std::rotl(v1, 17) ^ v2;
    v2 = std::rotl(v2, 32);
  }
  void take(U64 word) {
    v3 ^= word;
    round();
    round();
    v0 ^= word;
  }
};

/// The eight bytes from `at` on, the lowest first.
template <class Bytes>
U64 wordAt(Bytes const& bytes, std::size_t at) {
  U64 word = 0;
  for (std::size_t i = 8; i-- > 0;) {
    word = word << 8 | static_cast<Kex::U8>(bytes[at + i]);
  }
  return word;
}

}  // namespace

U64 sipHash(HashKey const& key, std::string_view text) {
  U64 const k0 = wordAt(key, 0);
  U64 const k1 = wordAt(key, 8);
  Words words{.v0 = k0 ^ 0x736f6d6570736575,
              .v1 = k1 ^ 0x646f72616e646f6d,
              .v2 = k0 ^ 0x6c7967656e657261,
              .v3 = k1 ^ 0x7465646279746573};
  std::size_t at = 0;
  for (; at + 8 <= text.size(); at += 8) {
    words.take(wordAt(text, at));
  }
  std::array<char, 8> rest{};
  text.copy(rest.data(), rest.size(), at);
  words.take(wordAt(rest, 0) | U64{text.size()} << 56);
  words.v2 ^= 0xff;
  for (int i = 0; i < 4; ++i) {
    words.round();
  }
  return words.v0 ^ words.v1 ^ words.v2 ^ words.v3;
}

}  // namespace Agent
