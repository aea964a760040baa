// Bus transactions as transcripts and recordings write them.
#include "agent/recording/Transcript.h"

#include "agent/base/Text.h"
#include "host/hardware/VornRequest.h"
#include "host/kex/base/Format.h"

namespace Agent {

using Json = nlohmann::ordered_json;

Json transactionJson(std::string const& slot, TransactionRecord const& record) {
  Smbus::Transaction const& transaction = record.transaction;
  Json object;
  object["time"] = record.time;
  object["slot"] = slot;
  object["event"] = "transaction";
  object["request"] = record.request;
  object["device"] = transaction.address.device();
  object["command"] = transaction.address.offset();
  object["write"] =
      transaction.write.length == 0 ? Json(nullptr) : Json(hex(transaction.write.view()));
  object["readLength"] = transaction.readLength;
  object["read"] = record.isOk ? Json(hex(record.read.view())) : Json(nullptr);
  object["status"] =
      static_cast<int>(record.isOk ? Kex::Request::kSucceeded : Kex::Request::kFailed);
  object["error"] = record.isOk ? Json(nullptr) : Json(Smbus::rowOf(record.error).name);
  return object;
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
