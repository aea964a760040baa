// The FDL of each slot as a file, for others to read.
#pragma once

#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string>

#include "agent/base/Ledger.h"
#include "agent/base/Trouble.h"
#include "agent/publish/Folder.h"
#include "agent/publish/PublishedFile.h"
#include "agent/report/Supply.h"
#include "agent/transport/Timer.h"

namespace Agent {

/// How FDL is published.
struct Publishing {
  /// An existing folder.
  std::string folder;
  /// How long a bus in trouble keeps what is published, in seconds.
  double hold = 60;
  /// Whether files stay at the end, for the next run to take over.
  bool isKept = false;
  /// Seconds after which what failed is tried again and what others changed is put right.
  double repairInterval = 1;
};

/// Keeps `FOLDER/SLOT.fdl` for each slot whose supply is identified, and it is always that
/// supply's: a file that cannot be replaced is removed, and what fails is told of once and tried
/// again until it holds. Slot names are those of `isSlotName`.
class Publisher {
 public:
  /// Longest time in seconds for which a file of an earlier run stays without a verdict.
  static constexpr double kLongestUnconfirmed = 15;

  /// Throws a `Failure` when the folder cannot be opened or another program publishes there. What
  /// cannot be written later is told to `ledger`, which must outlive the publisher.
  Publisher(Publishing const& publishing, Ledger& ledger);
  Publisher(Publisher const&) = delete;
  Publisher& operator=(Publisher const&) = delete;
  /// Takes away all that is published, unless it is kept.
  ~Publisher();

  /// The slots from now on. Files of others, this run's and those that an earlier one left, go.
  void slotsAre(std::set<std::string> const& names);
  /// What the detection in a slot, one of the slots, has come to.
  void supplyIs(std::string const& slot, Supply const& supply);
  /// How often a file could not be written or removed.
  Kex::U64 failures() const { return folder_.failures(); }
  /// Whether the folder has gone and cannot be made; that is tried again, too.
  bool hasLostFolder() const { return folder_.isLost(); }
  /// All but the folder, from now on; a hold that has begun goes on.
  void publishingIs(Publishing const& publishing);

 private:
  /// A slot's file.
  struct Entry {
    Entry(Folder& folder, std::string const& slot, Ledger& ledger, std::function<void()> onTime);

    void contentIs(std::optional<std::string> content);
    /// Ends what is published at `time`, or when it is to end anyhow.
    void endAt(double time);
    void settle();

    PublishedFile file;
    /// Whether an earlier run's file waits for the first verdict.
    bool isInherited = false;
    /// When what is published ends, unless a verdict comes, in seconds.
    double end = std::numeric_limits<double>::infinity();
    Timer timer;
  };

  void add(std::string const& slot, bool isInherited);
  /// Lets go of the files of slots that are none any more, as far as they can be removed.
  void settleLeaving();
  void writeList();
  void repair();

  Publishing publishing_;
  Ledger& ledger_;
  Folder folder_;
  Trouble trouble_;
  /// Whether an earlier run's files are to be looked after yet.
  bool isStart_ = true;
  std::map<std::string, Entry> entries_;
  /// Files of slots that are none any more, by the slot's name.
  std::map<std::string, PublishedFile> leaving_;
  /// Names all slots that may have a file, a line each, for the next run.
  PublishedFile list_;
  Timer repair_;
};

}  // namespace Agent
