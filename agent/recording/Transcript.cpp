// Bus transactions as transcripts and recordings write them.
#include "agent/recording/Transcript.h"

#include <optional>

#include "agent/base/Text.h"
#include "host/hardware/VornRequest.h"
#include "host/kex/base/Format.h"

namespace Agent {

JsonObject transactionJson(std::string const& slot, TransactionRecord const& record) {
  Smbus::Transaction const& transaction = record.transaction;
  auto const when = [](bool isKnown, auto const& value) {
    return isKnown ? std::optional(value) : std::nullopt;
  };
  JsonObject object;
  object.add("time", record.time)
      .add("slot", slot)
      .add("event", "transaction")
      .add("request", record.request)
      .add("device", transaction.address.device())
      .add("command", transaction.address.offset())
      .add("write", when(transaction.write.length != 0, hex(transaction.write.view())))
      .add("readLength", transaction.readLength)
      .add("read", when(record.isOk, hex(record.read.view())))
      .add("status", int{record.isOk ? Kex::Request::kSucceeded : Kex::Request::kFailed})
      .add("error", when(!record.isOk, Smbus::rowOf(record.error).name));
  return object;
}

std::string recordingLine(std::string const& slot, TransactionRecord const& record) {
  auto const failure = record.isOk ? std::nullopt : std::optional(record.failure);
  return transactionJson(slot, record).add("failure", failure).text();
}

std::string recordingLines(std::string const& slot, RecordedTransaction const& transaction) {
  std::string text = recordingLine(slot, transaction.record) + '\n';
  if (transaction.repeats == 1) {
    TransactionRecord again = transaction.record;
    again.time = transaction.until;
    text += recordingLine(slot, again) + '\n';
  } else if (transaction.repeats > 1) {
    text += JsonObject()
                .add("time", transaction.until)
                .add("slot", slot)
                .add("event", "repeated")
                .add("transactions", transaction.repeats)
                .text() +
            '\n';
  }
  return text;
}

std::string transactionLine(std::string const& slot, TransactionRecord const& record) {
  Smbus::Transaction const& transaction = record.transaction;
  std::string text =
      Kex::format("%.3f %s %s 0x%02x 0x%02x", record.time, slot.c_str(), record.request.c_str(),
                  transaction.address.device(), transaction.address.offset())
          .charPtr();
  if (transaction.write.length != 0) {
    text += " write " + hex(transaction.write.view(), " ");
  }
  return text + " -> " + (record.isOk ? hex(record.read.view(), " ") : escaped(record.failure));
}

}  // namespace Agent
