// Every kind of fault at every transaction of a supply's life, alone and in pairs: the slot always
// comes back to the right description, and tries again as often and as soon as it should.
#include <gtest/gtest.h>

#include <iostream>
#include <set>

#include "agent/slots/FruImage.h"
#include "agent/transport/FaultTransport.h"
#include "agent/transport/SimulatedBus.h"
#include "host/detector/SlotDriver.h"
#include "host/ipmi/SupportedPowerSupplyRegistry.h"
#include "host/kex/time/ActivityManager.h"
#include "ipmi/Descriptors.h"
#include "pmbus/Identifier.h"

namespace {

using Agent::Fault;
using Hardware::PowerSupplySlot::SlotStatus;
using Hardware::PowerSupplySlot::Supply;
using Hardware::PowerSupplySlot::Verdict;
using PowerSupplyDetector::IdentifierBase;

/// A fault, and whether its transaction is withdrawn by switching the identifier off and on.
struct Kind {
  char const* name;
  Fault fault;
  bool isWithdrawn = false;
};

// Two flips of this kind do not make up for each other in a checksum of the sample.
Kind const kKinds[] = {
    {"nack", {.kind = Fault::Kind::nack}},
    {"hang", {.kind = Fault::Kind::hang}},
    {"late", {.kind = Fault::Kind::late}},
    {"count 0", {.kind = Fault::Kind::count}},
    {"count 1", {.kind = Fault::Kind::count, .value = 1}},
    {"flipped count", {.kind = Fault::Kind::flip, .value = 0xFF}},
    {"flipped byte", {.kind = Fault::Kind::flip, .byte = 2, .value = 0xFF}},
    {"four nacks", {.kind = Fault::Kind::nack, .transactions = 4}},
    {"four hangs", {.kind = Fault::Kind::hang, .transactions = 4}},
    {"gone for a while", {.kind = Fault::Kind::nack, .transactions = 9}},
    {"withdrawn", {.kind = Fault::Kind::flip}, true},
};
/// Poll 2, identification 6, checks 3.
constexpr Kex::U32 kTransactions = 11;

/// A fault that starts with the transaction of this number.
struct Planned {
  Kex::U32 at;
  Kind const* kind;
};

/// Sees all transactions of a slot and the times at which they are tried again, and that an
/// identified supply is never described otherwise than it is.
class Watch final : public Smbus::Transport, private Smbus::AnswerSink {
 public:
  Watch(std::vector<Planned> const& plan, Kex::String8 const& fdl)
      : fdl_(fdl),
        faults_(std::make_unique<Agent::SimulatedBus>(
            Agent::SimulatedSupply(Agent::readFruImage(PSU_SAMPLES "/ds2900.fru"), "EMERSON"))) {
    Kex::U32 next = 0;
    for (auto const& [at, kind] : plan) {
      if (at > next) {
        // Flips no bit.
        faults_.faultQEnq({.kind = Fault::Kind::flip, .transactions = at - next});
      }
      faults_.faultQEnq(kind->fault);
      next = at + kind->fault.transactions;
      if (kind->isWithdrawn) {
        withdrawn_.insert(at);
      }
    }
  }

  /// Whose transactions they are.
  IdentifierBase* identifier = nullptr;
  Kex::U32 seen = 0;

  void start(Smbus::Transaction const& transaction, Kex::U64 ticket,
             Smbus::AnswerSink& sink) override {
    auto const& supply = identifier->status()->supply();
    EXPECT_TRUE(!supply || supply->verdict != Verdict::identified || supply->fdl == fdl_ ||
                fdl_.empty());
    auto const state = identifier->state();
    double const now = Agent::Timer::now();
    if (failures_ > 0 && !isWithdrawn_) {
      bool const isRetry = state_ != IdentifierBase::kPollForInsertion && failures_ < 4;
      EXPECT_EQ(state, isRetry ? state_ : IdentifierBase::kPollForInsertion);
      bool const isCheck = state_ == IdentifierBase::kCheckSupply;
      double const atOnce = std::max(0.0, lastReset_ + 1 - ended_);
      double const wait = isRetry ? (isCheck ? 0.25 : 0) : isCheck ? atOnce : 1;
      EXPECT_NEAR(now - ended_, wait, 1e-6);
    }
    EXPECT_LE(now - ended_, 10);
    if (state != state_ || isWithdrawn_ || failures_ == 4) {
      failures_ = 0;
    }
    if (transaction.write.length == 0) {
      lastReset_ = now;
    }
    state_ = state;
    sink_ = &sink;
    ticket_ = ticket;
    isWithdrawn_ = withdrawn_.contains(seen++);
    if (isWithdrawn_) {
      offAndOn_.startIn(0);
    }
    faults_.start(transaction, ticket, *this);
  }

 private:
  void answerIs(Kex::U64 ticket, Smbus::Reply const& reply) override {
    if (ticket == ticket_) {
      failures_ = reply.isOk ? 0 : failures_ + 1;
      ended_ = Agent::Timer::now();
    }
    sink_->answerIs(ticket, reply);
  }

  Kex::String8 fdl_;
  Agent::FaultTransport faults_;
  Agent::Timer offAndOn_{[this] {
    identifier->hasNotificationActiveIs(false);
    identifier->hasNotificationActiveIs(true);
  }};
  std::set<Kex::U32> withdrawn_;
  Smbus::AnswerSink* sink_ = nullptr;
  Kex::U64 ticket_ = 0;
  double ended_ = Agent::Timer::now();
  double lastReset_ = 0;
  IdentifierBase::IdentifierState state_ = IdentifierBase::kPollForInsertion;
  int failures_ = 0;
  bool isWithdrawn_ = false;
};

/// The supply after a life with these faults; `fdl` is what it should be, if known.
Supply lifeWith(std::vector<Planned> const& plan, Kex::String8 const& fdl) {
  auto watch = std::make_unique<Watch>(plan, fdl);
  Watch& watching = *watch;
  auto const vorn = Kex::make<Hardware::Vorn>(Kex::make<Smbus::Bus>(std::move(watch)));
  auto const config =
      Kex::make<Hardware::PowerSupplySlot::SlotConfig>("S", Kex::make<SmbusVorn::VornDesc>(vorn));
  auto const status = Kex::make<SlotStatus>("status");
  auto const identifier = Kex::make<Emerson::PmbusIdentifier::Identifier>(
      Kex::activityManager().config().clock(), config, status, vorn->newRequest(),
      vorn->newRequest(), vorn->newRequest(), nullptr, nullptr, nullptr, Kex::U8{0x58},
      Kex::U8{0xB0});
  watching.identifier = identifier.ptr();
  identifier->hasNotificationActiveIs(true);
  PowerSupplyDetector::SlotDriver driver("driver");
  driver.identifierIs("EmersonPmbus", identifier);
  Kex::activityManager().runUntil(Agent::Timer::now() + 30);
  EXPECT_EQ(identifier->serialNum(), "L1330K04287");
  EXPECT_EQ(identifier->state(), IdentifierBase::kCheckSupply);
  return *status->supply();
}

TEST(FaultSweep, endsWithTheRightSupply) {
  auto const registry = Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  registry->powerSupplyDescriptorIs(Emerson::IpmiIdentifier::dS2900Factory("sweep"));
  Supply const expected = lifeWith({}, "");
  ASSERT_EQ(expected.verdict, Verdict::identified);
  ASSERT_NE(expected.fdl.view().find("L1330K04287"), std::string_view::npos);

  std::vector<std::vector<Planned>> plans;
  for (Kex::U32 at = 0; at < kTransactions; ++at) {
    for (Kind const& kind : kKinds) {
      plans.push_back({{at, &kind}});
      for (Kind const& other : kKinds) {
        for (Kex::U32 const gap : {0U, 1U, 4U}) {
          plans.push_back({{at, &kind}, {at + kind.fault.transactions + gap, &other}});
        }
      }
    }
  }
  // What types declare when somebody first asks them stays.
  for (Kind const& kind : kKinds) {
    lifeWith({{0, &kind}}, expected.fdl);
  }
  std::size_t const before = Kex::VFPtrInterface::liveObjects();
  for (auto const& plan : plans) {
    Supply const supply = lifeWith(plan, expected.fdl);
    EXPECT_EQ(supply.verdict, Verdict::identified);
    EXPECT_EQ(supply.fdl, expected.fdl);
    EXPECT_EQ(supply.product->fields(), expected.product->fields());
    if (HasFailure()) {
      for (auto const& [at, kind] : plan) {
        ADD_FAILURE() << kind->name << " from transaction " << at << " on";
      }
      break;
    }
  }
  EXPECT_EQ(Kex::VFPtrInterface::liveObjects(), before);
  std::cout << "lives with faults: " << plans.size() << '\n';
  registry->powerSupplyDescriptorDel("sweep");
}

}  // namespace
