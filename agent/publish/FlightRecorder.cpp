// What happened in a slot, kept until it is needed to know why.
#include "agent/publish/FlightRecorder.h"

#include <utility>

#include "agent/base/JsonObject.h"
#include "agent/recording/Recording.h"
#include "agent/recording/Redactor.h"
#include "agent/recording/Transcript.h"
#include "host/kex/time/ActivityManager.h"

namespace Agent {

namespace {

/// In bytes: what follows an incident is cut there.
constexpr std::size_t kLongestText = std::size_t{512} << 10;

/// Makes the text of a recording.
class TextSink final : public RecordingSink {
 public:
  explicit TextSink(std::string const& slot) : slot_(slot) { lineIs(Recording::header()); }

  std::string const& text() const { return text_; }
  void transactionIs(RecordedTransaction const& transaction) override {
    text_ += recordingLines(slot_, transaction);
  }
  void lineIs(std::string const& line) override { (text_ += line) += '\n'; }

 private:
  std::string const& slot_;
  std::string text_;
};

/// Why what is told of a supply is an incident; null if it is none.
char const* causeOf(std::optional<Verdict> before, Verdict verdict, bool isUnsteady) {
  if (before == Verdict::identified && verdict != Verdict::identified) {
    return "lost";
  }
  if (verdict != Verdict::identified && verdict != Verdict::absent) {
    return "notIdentified";
  }
  return isUnsteady ? "unsteady" : nullptr;
}

}  // namespace

class FlightRecorder::Incident {
 public:
  Incident(std::string file, std::string const& slot, Pseudonyms const* pseudonyms)
      : file_(std::move(file)), sink_(slot) {
    if (pseudonyms != nullptr) {
      redactor_.emplace(*pseudonyms, sink_);
    }
  }
  Incident(Incident const&) = delete;
  Incident& operator=(Incident const&) = delete;
  ~Incident() = default;

  /// What belongs to it is told here.
  RecordingSink& sink() { return redactor_ ? static_cast<RecordingSink&>(*redactor_) : sink_; }
  /// Whether nothing more fits in.
  bool isFull() const { return sink_.text().size() >= kLongestText; }
  void write(IncidentFolder& folder) {
    if (redactor_) {
      redactor_->flush();
    }
    folder.write(file_, sink_.text());
  }

 private:
  std::string file_;
  TextSink sink_;
  std::optional<Redactor> redactor_;
};

FlightRecorder::FlightRecorder(std::string slot, IncidentFolder& folder,
                               Pseudonyms const* pseudonyms, Ledger& ledger,
                               FlightRing::MakeStart makeStart)
    : slot_(std::move(slot)),
      folder_(folder),
      pseudonyms_(pseudonyms),
      ledger_(ledger),
      makeStart_(std::move(makeStart)),
      clock_(Kex::activityManager().config().clock()),
      timer_([this] { end(); }) {}

FlightRecorder::~FlightRecorder() { end(); }

void FlightRecorder::supplyIs(Verdict verdict, std::string const& line, bool isUnsteady) {
  keep(line, true);
  char const* const cause = causeOf(std::exchange(verdict_, verdict), verdict, isUnsteady);
  if (cause != nullptr && clock_->time() - lastIncident_ >= kApart) {
    begin(verdict, cause);
  }
}

void FlightRecorder::lineIs(std::string const& line) { keep(line, false); }

void FlightRecorder::keep(std::string const& line, bool isSupply) {
  ring_.lineIs(line, isSupply);
  if (incident_ && !incident_->isFull()) {
    incident_->sink().lineIs(line);
  }
}

void FlightRecorder::follow(Smbus::Client const& client, Smbus::Transaction const& transaction,
                            Smbus::Reply const& reply) {
  if (!incident_->isFull()) {
    incident_->sink().transactionIs({.record = recordOf(client, transaction, reply), .line = 0});
  }
}

void FlightRecorder::begin(Verdict verdict, char const* cause) {
  lastIncident_ = clock_->time();
  incident_ =
      std::make_unique<Incident>(folder_.fileOf(slot_, lastIncident_, verdict), slot_, pseudonyms_);
  ring_.tell(incident_->sink(), makeStart_);
  incident_->sink().lineIs(JsonObject()
                               .add("time", lastIncident_)
                               .add("slot", slot_)
                               .add("event", "incident")
                               .add("verdict", verdictName(verdict))
                               .add("cause", cause)
                               .text());
  write();
  timer_.startIn(kAfter);
}

void FlightRecorder::write() {
  ledger_.attempt([this] { incident_->write(folder_); });
}

void FlightRecorder::end() {
  if (incident_) {
    write();
    incident_.reset();
  }
}

}  // namespace Agent
