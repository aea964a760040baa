// What happened in a slot, kept until it is needed to know why.
#pragma once

#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "agent/base/Ledger.h"
#include "agent/publish/IncidentFolder.h"
#include "agent/recording/FlightRing.h"
#include "agent/recording/Pseudonym.h"
#include "agent/report/Supply.h"
#include "agent/transport/Timer.h"

namespace Agent {

/// Keeps the last of what happens in a slot, and writes it as a recording when a supply is lost,
/// when one ends in a verdict other than `identified` and `absent`, or when the slot is unsteady:
/// at once, and again with what follows when that is over.
class FlightRecorder {
 public:
  /// For how long what follows belongs to an incident, in seconds.
  static constexpr double kAfter = 30;
  /// Least seconds between two incidents of a slot.
  static constexpr double kApart = 60;

  /// Serial numbers are written as `pseudonyms`, or as they are where there are none. What cannot
  /// be written is told to `ledger`. All these must outlive the recorder.
  FlightRecorder(std::string slot, IncidentFolder& folder, Pseudonyms const* pseudonyms,
                 Ledger& ledger, FlightRing::MakeStart makeStart);
  FlightRecorder(FlightRecorder const&) = delete;
  FlightRecorder& operator=(FlightRecorder const&) = delete;
  /// Writes the incident that is not over yet.
  ~FlightRecorder();

  /// A transaction of `client` ended. `makeBeginning` tells how the detection began that may begin
  /// with it.
  template <class MakeBeginning>
  void transactionIs(Smbus::Client const& client, Smbus::Transaction const& transaction,
                     Smbus::Reply const& reply, MakeBeginning makeBeginning) {
    double const now = clock_->time();
    if (!ring_.isRepeated(client, transaction, reply, now)) {
      bool const isBeginning = beginsDetection(client.name(), transaction);
      std::optional<Beginning> const beginning =
          isBeginning ? std::optional<Beginning>(makeBeginning()) : std::nullopt;
      ring_.transactionIs(client, transaction, reply, now, beginning ? &*beginning : nullptr);
    }
    if (incident_) {
      follow(client, transaction, reply);
    }
  }
  /// `line` tells of the supply that is there from now on; whether the slot is unsteady with it.
  void supplyIs(Verdict verdict, std::string const& line, bool isUnsteady);
  /// `line` tells of something else that happens.
  void lineIs(std::string const& line);

 private:
  /// The recording of an incident, as far as it has come.
  class Incident;

  void follow(Smbus::Client const& client, Smbus::Transaction const& transaction,
              Smbus::Reply const& reply);
  void keep(std::string const& line, bool isSupply);
  void begin(Verdict verdict, char const* cause);
  void write();
  void end();

  std::string slot_;
  IncidentFolder& folder_;
  Pseudonyms const* pseudonyms_;
  Ledger& ledger_;
  FlightRing::MakeStart makeStart_;
  Kex::Ptr<Kex::Clock> clock_;
  FlightRing ring_;
  std::optional<Verdict> verdict_;
  std::unique_ptr<Incident> incident_;
  double lastIncident_ = -std::numeric_limits<double>::infinity();
  Timer timer_;
};

}  // namespace Agent
