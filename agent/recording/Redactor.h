// A recording without the serial numbers.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "agent/recording/Pseudonym.h"
#include "agent/recording/RecordingSink.h"

namespace Agent {

/// Passes on what a recording of one slot is made of, with pseudonyms in place of serial numbers
/// and checksums put right, so that a replay comes to the same verdicts. Of an area whose checksum
/// is wrong nobody knows where the serial number stands: all its texts are replaced; and of one
/// that was not read to its end all bytes. It keeps what identification reads until that is over.
class Redactor final : public RecordingSink {
 public:
  /// Both must outlive the redactor.
  Redactor(Pseudonyms const& pseudonyms, RecordingSink& out) : pseudonyms_(pseudonyms), out_(out) {}

  void transactionIs(RecordedTransaction const& transaction) override;
  void lineIs(std::string const& line) override;
  /// Passes on what is kept.
  void flush();

 private:
  using Bytes = std::vector<Kex::U8>;
  using Entry = std::variant<RecordedTransaction, std::string>;

  /// Where bytes of the area stand that a transaction read.
  struct Piece {
    std::size_t entry;
    std::size_t position;
    std::size_t count;
  };

  void redactArea();
  Bytes redacted(Bytes const& area);
  void redactCheck(TransactionRecord& record) const;
  void redactLine(std::string& line) const;
  /// Passes on what is kept, as it is.
  void pass();

  Pseudonyms const& pseudonyms_;
  RecordingSink& out_;
  /// What was told since the detection began whose identification is not over.
  std::vector<Entry> kept_;
  bool hasTransactions_ = false;
  /// Offset of the product info area, as the header tells it.
  Kex::U8 area_ = 0;
  /// Of the serial number in the FRU data; none where there is none.
  std::optional<Kex::U8> serialNumber_;
  Ipmi::FieldEncoding encoding_ = Ipmi::FieldEncoding::eightBit;
  /// Serial numbers as texts, and their pseudonyms.
  std::map<std::string, std::string> texts_;
  /// Digests of texts that no descriptor knows, and those of their pseudonyms.
  std::map<Kex::U32, Kex::U32> digests_;
};

}  // namespace Agent
