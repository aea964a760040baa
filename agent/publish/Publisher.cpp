// The FDL of each slot as a file, for others to read.
#include "agent/publish/Publisher.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <utility>

#include "agent/publish/SlotName.h"

namespace Agent {

namespace {

std::string fileName(std::string const& slot) { return slot + ".fdl"; }

std::set<std::string> namesIn(std::string const& list) {
  std::set<std::string> names;
  std::istringstream lines(list);
  for (std::string name; std::getline(lines, name);) {
    if (isSlotName(name)) {
      names.insert(name);
    }
  }
  return names;
}

}  // namespace

Publisher::Entry::Entry(Folder& folder, std::string const& slot, Ledger& ledger,
                        std::function<void()> onTime)
    : file(folder, fileName(slot), ledger), timer(std::move(onTime)) {}

void Publisher::Entry::contentIs(std::optional<std::string> content) {
  timer.stop();
  end = std::numeric_limits<double>::infinity();
  isInherited = false;
  file.contentIs(std::move(content));
}

void Publisher::Entry::endAt(double time) {
  end = std::min(end, time);
  timer.startAt(end);
}

void Publisher::Entry::settle() {
  if (!isInherited) {
    file.settle();
  }
}

Publisher::Publisher(Publishing const& publishing, Ledger& ledger)
    : publishing_(publishing),
      ledger_(ledger),
      folder_(publishing.folder),
      trouble_(publishing.folder, ledger),
      list_(folder_, ".psu-agent.slots", ledger),
      repair_([this] { repair(); }) {
  repair_.startIn(publishing_.repairInterval);
}

Publisher::~Publisher() {
  if (!publishing_.isKept) {
    slotsAre({});
  }
}

void Publisher::slotsAre(std::set<std::string> const& names) {
  auto const leave = [&](std::string const& slot) {
    bool const isGone = !names.contains(slot);
    if (isGone) {
      leaving_.try_emplace(slot, folder_, fileName(slot), ledger_);
    }
    return isGone;
  };
  bool const isStart = std::exchange(isStart_, false);
  if (isStart) {
    std::ranges::for_each(namesIn(folder_.content(list_.name()).value_or("")), leave);
  }
  std::erase_if(entries_, [&](auto const& entry) { return leave(entry.first); });
  settleLeaving();
  for (std::string const& slot : names) {
    leaving_.erase(slot);
    if (!entries_.contains(slot)) {
      add(slot, isStart && publishing_.isKept);
    }
  }
  writeList();
}

void Publisher::add(std::string const& slot, bool isInherited) {
  auto const [at, isNew] = entries_.try_emplace(
      slot, folder_, slot, ledger_, [this, slot] { entries_.at(slot).contentIs(std::nullopt); });
  Entry& entry = at->second;
  entry.isInherited = isInherited && folder_.stamp(fileName(slot));
  if (entry.isInherited) {
    entry.endAt(Timer::now() + kLongestUnconfirmed);
  } else {
    // What an earlier run may have left is not known to be true any more.
    entry.settle();
  }
}

void Publisher::supplyIs(std::string const& slot, Supply const& supply) {
  Entry& entry = entries_.at(slot);
  if (supply.verdict == Verdict::identified) {
    entry.contentIs(std::string(supply.fdl.view()));
  } else if (supply.verdict == Verdict::unreachable) {
    entry.endAt(Timer::now() + publishing_.hold);
  } else {
    entry.contentIs(std::nullopt);
  }
}

void Publisher::publishingIs(Publishing const& publishing) {
  publishing_ = publishing;
  repair_.startIn(publishing_.repairInterval);
}

void Publisher::settleLeaving() {
  for (auto at = leaving_.begin(); at != leaving_.end();) {
    at = at->second.settle() ? leaving_.erase(at) : std::next(at);
  }
}

void Publisher::writeList() {
  std::string list;
  auto const add = [&list](auto const& entry) { list += entry.first + '\n'; };
  std::ranges::for_each(entries_, add);
  std::ranges::for_each(leaving_, add);
  list_.contentIs(list.empty() ? std::nullopt : std::optional(list));
}

void Publisher::repair() {
  repair_.startIn(publishing_.repairInterval);
  if (trouble_.attempt([this] { folder_.reopen(); })) {
    settleLeaving();
    for (auto& [slot, entry] : entries_) {
      entry.settle();
    }
    writeList();
  }
}

}  // namespace Agent
