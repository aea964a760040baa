// What the page shows of one slot, as it is told and as the page's script reads it.
#include "agent/page/Lane.h"

#include <algorithm>
#include <cmath>

#include "agent/base/Text.h"
#include "agent/report/FruBytes.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

constexpr std::string_view kPoll = "pollForInsertion";
constexpr std::string_view kCheck = "checkSupply";

Kex::U64 micros(double seconds) {
  constexpr double kMost = 1e15;  // thirty years
  return static_cast<Kex::U64>(std::llround(std::clamp(seconds * 1e6, 0.0, kMost)));
}

bool isSameRequest(TransactionRecord const& one, TransactionRecord const& other) {
  return one.request == other.request &&
         one.transaction.address.offset() == other.transaction.address.offset() &&
         std::ranges::equal(one.transaction.write.view(), other.transaction.write.view());
}

/// What the transaction is about, for a person.
std::string purposeOf(TransactionRecord const& record) {
  if (isFruRead(record.transaction)) {
    return std::string(
        Kex::format("FRU data from 0x%02X on", record.transaction.write.bytes[1]).view());
  }
  return record.transaction.write.length == 0 && record.request == kPoll ? "MFR_ID" : "";
}

void appendItem(std::string& list, std::string_view item) {
  list += list.empty() ? "" : ",";
  list += item;
}

template <class Number>
std::string joined(std::vector<Number> const& numbers) {
  std::string list;
  for (Number const number : numbers) {
    appendItem(list, std::to_string(number));
  }
  return list;
}

std::vector<std::string_view> views(std::vector<std::string> const& texts) {
  return {texts.begin(), texts.end()};
}

}  // namespace

void Lane::transactionIs(TransactionRecord const& record, std::vector<std::string> const& notes) {
  // A poll is one attempt; the next one is another poll.
  bool const isRetry = last_ && !last_->record.isOk && record.request != kPoll &&
                       isSameRequest(last_->record, record);
  trackReview(record);
  unsigned const attempt = isRetry ? last_->attempt + 1 : 1;
  last_ = Last{.record = record, .attempt = attempt};
  Kex::U64 const now = std::max(micros(record.time), lastMicros_);
  steps_.push_back(now - lastMicros_);
  lastMicros_ = now;
  shapes_.push_back(shapeOf(record, attempt, notes));
}

void Lane::trackReview(TransactionRecord const& record) {
  if (last_ && record.request == kPoll && last_->record.request == kCheck && last_->record.isOk) {
    reviewStart_ = record.time;
  }
  if (reviewStart_ && record.isOk && record.request == kCheck) {
    reviews_.emplace_back(*reviewStart_, record.time);
    reviewStart_.reset();
  }
}

Kex::U32 Lane::shapeOf(TransactionRecord const& record, unsigned attempt,
                       std::vector<std::string> const& notes) {
  Smbus::Transaction const& transaction = record.transaction;
  JsonObject object;
  auto const when = [](bool isKnown, auto const& value) {
    return isKnown ? std::optional(value) : std::nullopt;
  };
  object.add("request", record.request)
      .add("what", purposeOf(record))
      .add("device", transaction.address.device())
      .add("command", transaction.address.offset())
      .add("write", when(transaction.write.length != 0, hex(transaction.write.view())))
      .add("readLength", transaction.readLength)
      .add("read", when(record.isOk && record.read.length != 0, hex(record.read.view())))
      .add("error", when(!record.isOk, Smbus::rowOf(record.error).name))
      .add("failure", when(!record.isOk, record.failure))
      .add("attempt", attempt)
      .add("notes", views(notes));
  auto const [found, isNew] =
      known_.try_emplace(object.text(), static_cast<Kex::U32>(known_.size()));
  if (isNew) {
    appendItem(shapesJson_, found->first);
  }
  return found->second;
}

void Lane::supplyIs(double time, LaneSupply supply) {
  bool const isSame = told_ && told_->verdict == supply.verdict &&
                      told_->serialNumber == supply.serialNumber && told_->fdl == supply.fdl;
  if (isSame) {
    return;
  }
  bool isSwap = false;
  if (!supply.fdl.empty()) {
    std::pair const identity(supply.serialNumber, supply.fdl);
    isSwap = identified_ && *identified_ != identity;
    identified_ = identity;
  }
  appendItem(suppliesJson_,
             supply.members.add("swap", isSwap).add("time", std::max(time, 0.0)).text());
  told_ = std::move(supply);
}

void Lane::actIs(double time, std::string const& text) {
  appendItem(actsJson_, JsonObject().add("time", time).add("text", text).text());
}

void Lane::appendTo(std::string& out) const {
  std::string reviews;
  for (auto const& [from, to] : reviews_) {
    appendItem(reviews,
               "[" + std::to_string(micros(from)) + "," + std::to_string(micros(to)) + "]");
  }
  std::string head =
      JsonObject().add("slot", slot_).add("file", file_).add("notes", views(notes_)).text();
  head.pop_back();
  out += head;
  out += ",\"supplies\":[" + suppliesJson_ + "],\"acts\":[" + actsJson_ + "],\"reviews\":[" +
         reviews + "],\"shapes\":[" + shapesJson_ + "],\"at\":[" + joined(steps_) +
         "],\"shape\":[" + joined(shapes_) + "]}";
}

}  // namespace Agent
