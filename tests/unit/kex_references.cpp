// Counted references, and buffers: disposal, null references, counting across threads, lengths.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

#include "host/hal/Buf.h"
#include "host/kex/base/Exception.h"

namespace {

using Kex::Ptr;
std::size_t live() { return Kex::VFPtrInterface::liveObjects(); }

/// Refers to itself once more while it is destroyed.
struct Counted : Kex::PtrInterface {
  explicit Counted(int& counter) : ended(counter) {}
  ~Counted() override {
    ++ended;
    Ptr<Counted> const again(this);
  }
  int& ended;
};

TEST(KexReferences, disposeOfTheirObjectOnceAtTheLastRelease) {
  std::size_t const before = live();
  int ended = 0;
  auto object = Kex::make<Counted>(ended);
  {
    Ptr<Kex::PtrInterface const> const asBase = object;
    Ptr<Counted> moved = Ptr<Counted>(object);
    Ptr<Counted> const taken = std::move(moved);
    EXPECT_EQ(object->refCount(), 3U);
    Ptr<Counted> assigned = Kex::make<Counted>(ended);
    assigned = object;
    EXPECT_EQ(ended, 1);
    auto const& self = assigned;
    assigned = self;
    EXPECT_EQ(object->refCount(), 4U);
    EXPECT_EQ(asBase, assigned);
  }
  EXPECT_EQ(object->refCount(), 1U);
  Counted* const lasting = object.ptr();
  lasting->isNondestructingIs(true);
  object = nullptr;
  EXPECT_EQ(ended, 1);
  lasting->isNondestructingIs(false);
  object = lasting;
  object = nullptr;
  EXPECT_EQ(ended, 2);
  EXPECT_EQ(live(), before);
}

TEST(KexReferences, throwWhenNullIsDereferenced) {
  Ptr<Counted> const null;
  EXPECT_THROW((void)null->refCount(), Kex::RangeException);
  EXPECT_THROW((void)(*null).refCount(), Kex::RangeException);
}

TEST(KexReferences, areToObjectsAlignedAsTheirClassAsks) {
  struct alignas(128) Wide : Kex::PtrInterface {};
  std::size_t const before = live();
  {
    std::vector<Ptr<Wide>> objects(16);
    for (auto& object : objects) {
      object = Kex::make<Wide>();
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object.ptr()) % alignof(Wide), 0U);
    }
    EXPECT_EQ(live(), before + objects.size());
  }
  EXPECT_EQ(live(), before);
}

TEST(KexReferences, countRightAcrossThreadsWhileSwitchedOn) {
  Kex::VFPtrInterface::enableThreadSafePointers = true;
  int ended = 0;
  auto const object = Kex::make<Counted>(ended);
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&object] {
        for (int n = 0; n < 50'000; ++n) {
          Ptr<Counted> const copy = object;
        }
      });
    }
  }
  Kex::VFPtrInterface::enableThreadSafePointers = false;
  EXPECT_EQ(object->refCount(), 1U);
}

TEST(HalBuf, keepsCapacityAndLengthApart) {
  auto const bytes = std::to_array<Kex::U8>({1, 0, 3});
  struct {
    std::function<void(Hal::Buf&)> steps;  ///< with "abcd" in 4 bytes
    Kex::U32 size;
    std::string contents;
    char const* refused;
  } const rows[] = {
      {[](auto& b) { b.lenIs(1), b.lenIs(3); }, 4, "abc", ""},
      {[](auto& b) { b.lenIs(5); }, 4, "abcd", "length 5 of a buffer with a capacity of 4 bytes"},
      {[](auto& b) { b.strIs("abcdef"); }, 6, "abcdef", ""},
      {[](auto& b) { b.strIs("x"); }, 4, "x", ""},
      {[](auto& b) { b.strIs(Kex::String8(std::string(65537, 'x'))); }, 4, "abcd",
       "a buffer of 65537 bytes; it may have 65536"},
      {[&](auto& b) { b.lenIs(1), b.doAppend(bytes); }, 4, {"a\1\0\3", 4}, ""},
      {[&](auto& b) { b.doAppend(bytes); }, 7, {"abcd\1\0\3", 7}, ""},
      {[](auto& b) { b.doAppend(b.bytes()), b.doAppend(b.bytes().subspan(6)); }, 10, "abcdabcdcd",
       ""},
      {[](auto& b) { b.doAppend(std::vector<Kex::U8>(65533)); }, 4, "abcd",
       "a buffer of 65537 bytes; it may have 65536"},
      // More than what stands in the buffer itself.
      {[](auto& b) { b.strIs("0123456789abcdef"), b.doAppend(b.bytes()), b.doAppend(b.bytes()); },
       64, "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef", ""},
      {[](auto& b) { b.sizeIs(30), b.sizeIs(3), b.sizeIs(30), b.lenIs(5), b.byteIs(4, 'e'); },
       30,
       {"abc\0e", 5},
       ""},
      {[](auto& b) { b.sizeIs(2); }, 2, "ab", ""},
      {[](auto& b) { b.sizeIs(2), b.sizeIs(9), b.lenIs(3); }, 9, {"ab\0", 3}, ""},
      {[](auto& b) { b.sizeIs(0xffffffff); }, 4, "abcd",
       "a buffer of 4294967295 bytes; it may have 65536"},
      {[](auto& b) { (void)b.byte(4); }, 4, "abcd", "byte 4 of a buffer of 4 bytes"},
      {[](auto& b) { b.lenIs(0), b.byteIs(0, 1); }, 4, "", "byte 0 of a buffer of 0 bytes"},
      {[&](auto& b) { b.bytesIs(1, bytes); }, 4, {"a\1\0\3", 4}, ""},
      {[&](auto& b) { b.bytesIs(2, bytes); }, 4, "abcd", "3 bytes at 2 of a buffer of 4 bytes"},
      {[&](auto& b) { b.bytesIs(0xffffffff, bytes); }, 4, "abcd",
       "3 bytes at 4294967295 of a buffer of 4 bytes"},
  };
  for (auto const& row : rows) {
    auto const buffer = Kex::make<Hal::Buf>(4U);
    EXPECT_EQ(buffer->len(), 0U);
    buffer->strIs("abcd");
    std::string refused;
    try {
      row.steps(*buffer);
    } catch (Kex::RangeException const& error) {
      refused = error.what();
    }
    EXPECT_EQ(refused, row.refused) << &row - rows;
    EXPECT_EQ(buffer->size(), row.size) << &row - rows;
    EXPECT_EQ(buffer->str().view(), row.contents) << &row - rows;
  }
}

}  // namespace
