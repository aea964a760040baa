// Bus transactions as transcripts and recordings write them.
#pragma once

#include <string>

#include "agent/base/JsonObject.h"
#include "agent/recording/RecordedSlot.h"

namespace Agent {

/// `{"time":S,"slot":NAME,"event":"transaction","request":...,"device":N,"command":N,
/// "write":HEX|null,"readLength":N,"read":HEX|null,"status":2|3,"error":KIND|null}`; `time` is when
/// the transaction ended, `read` the bytes as they reached the handler's buffer.
JsonObject transactionJson(std::string const& slot, TransactionRecord const& record);

/// The same as recordings have it: with `"failure"`, why it failed (null when it did not).
std::string recordingLine(std::string const& slot, TransactionRecord const& record);

/// The lines, each ended, that recordings have of a transaction and its repetitions: a second line
/// of the one repetition, or one that counts them.
std::string recordingLines(std::string const& slot, RecordedTransaction const& transaction);

/// The same for a person: `SECONDS SLOT request 0xDEV 0xCMD write HEX -> HEX`, or the failure in
/// place of the bytes read.
std::string transactionLine(std::string const& slot, TransactionRecord const& record);

}  // namespace Agent
