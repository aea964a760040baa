// Counted references: when objects are disposed of, null references, counting across threads.
#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

#include "host/kex/Exception.h"
#include "host/kex/PtrInterface.h"

namespace {

using Kex::Ptr;

/// Runs `atEnd` with itself when it is destroyed.
class Counted : public Kex::PtrInterface {
 public:
  explicit Counted(std::function<void(Counted&)> atEnd = {}) : atEnd_(std::move(atEnd)) {}
  ~Counted() override {
    if (atEnd_) {
      atEnd_(*this);
    }
  }

 private:
  std::function<void(Counted&)> atEnd_;
};

TEST(KexReferences, eachWayOfHoldingAddsOneAndReleasingDropsIt) {
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  auto const object = Kex::make<Counted>();
  {
    Ptr<Counted> const copy = object;
    Ptr<Kex::PtrInterface const> const asBase = object;
    Ptr<Counted> moved = Ptr<Counted>(copy);
    EXPECT_EQ(object->refCount(), 4U);
    Ptr<Counted> const taken = std::move(moved);
    EXPECT_EQ(object->refCount(), 4U);
    Ptr<Counted> assigned = Kex::make<Counted>();
    EXPECT_EQ(Kex::VFPtrInterface::liveObjects(), before + 2);
    assigned = object;
    EXPECT_EQ(Kex::VFPtrInterface::liveObjects(), before + 1);
    auto const& self = assigned;
    assigned = self;
    EXPECT_EQ(object->refCount(), 5U);
    assigned = nullptr;
    EXPECT_EQ(object->refCount(), 4U);
    EXPECT_EQ(asBase, object);
  }
  EXPECT_EQ(object->refCount(), 1U);
}

TEST(KexReferences, disposedOfOnceAtTheLastReleaseUnlessNondestructing) {
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  int ended = 0;
  auto const refersToItself = [&ended](Counted& object) {
    ++ended;
    Ptr<Counted> const again(&object);
  };
  Kex::make<Counted>(refersToItself);
  EXPECT_EQ(ended, 1);
  auto* const lasting = new Counted(refersToItself);
  lasting->isNondestructingIs(true);
  { Ptr<Counted> const held(lasting); }
  EXPECT_EQ(ended, 1);
  lasting->isNondestructingIs(false);
  { Ptr<Counted> const held(lasting); }
  EXPECT_EQ(ended, 2);
  EXPECT_EQ(Kex::VFPtrInterface::liveObjects(), before);
}

TEST(KexReferences, aNullReferenceThrowsWhenItIsDereferenced) {
  Ptr<Counted> const null;
  std::function<void()> const uses[] = {[&] { (void)null->refCount(); },
                                        [&] { (void)(*null).refCount(); }};
  for (auto const& use : uses) {
    try {
      use();
      ADD_FAILURE() << "nothing thrown";
    } catch (Kex::RangeException const& error) {
      EXPECT_STREQ(error.what(), "null ValidPtr");
    }
  }
  EXPECT_FALSE(null);
  EXPECT_EQ(Kex::dynamicCast<Counted>(Ptr<Kex::PtrInterface>()), nullptr);
}

TEST(KexReferences, countsStayRightAcrossThreadsWhileSwitchedOn) {
  Kex::VFPtrInterface::enableThreadSafePointers = true;
  auto const object = Kex::make<Counted>();
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&object] {
        for (int n = 0; n < 50'000; ++n) {
          Ptr<Counted> const copy = object;
          Ptr<Kex::PtrInterface> const another = copy;
        }
      });
    }
  }
  Kex::VFPtrInterface::enableThreadSafePointers = false;
  EXPECT_EQ(object->refCount(), 1U);
}

}  // namespace
