// The folder that incidents are written to.
#include "agent/publish/IncidentFolder.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <vector>

#include "agent/publish/SlotName.h"
#include "host/kex/base/Format.h"

namespace Agent {

namespace {

using Hardware::PowerSupplySlot::verdictOf;
namespace fs = std::filesystem;

constexpr std::string_view kEnding = ".jsonl";

struct KeptFile {
  fs::file_time_type changed;
  std::string name;
  std::uintmax_t bytes;
  auto operator<=>(KeptFile const&) const = default;
};

/// Whether `name` is one that `fileOf` makes.
bool isIncident(std::string_view name) {
  if (!name.ends_with(kEnding)) {
    return false;
  }
  name.remove_suffix(kEnding.size());
  std::size_t const verdict = name.rfind('-');
  if (verdict == std::string_view::npos || !verdictOf(name.substr(verdict + 1))) {
    return false;
  }
  name = name.substr(0, verdict);
  std::size_t const time = name.rfind('-');
  return time != std::string_view::npos && isSlotName(name.substr(0, time)) &&
         name.find_first_not_of("0123456789.TZ", time + 1) == std::string_view::npos;
}

/// The incidents in the folder, and what a run that was killed left of one; the oldest first.
std::vector<KeptFile> incidents(std::string const& path) {
  std::vector<KeptFile> files;
  std::error_code error;
  // Others may take files away meanwhile.
  for (fs::directory_iterator at(path, error); !error && at != fs::directory_iterator();
       at.increment(error)) {
    std::string const name = at->path().filename().string();
    std::error_code gone;
    bool const isFile = at->symlink_status(gone).type() == fs::file_type::regular;
    fs::file_time_type const changed = at->last_write_time(gone);
    std::uintmax_t const bytes = at->file_size(gone);
    bool const isOurs = isIncident(name) || isIncident(Folder::nameOfUnfinished(name));
    if (isOurs && isFile && !gone) {
      files.push_back({.changed = changed, .name = name, .bytes = bytes});
    }
  }
  std::ranges::sort(files);
  return files;
}

std::string timeOfDay() {
  std::time_t const now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm parts{};
  gmtime_r(&now, &parts);
  char text[sizeof "20261124T030015Z"];
  return {text, std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &parts)};
}

}  // namespace

std::string IncidentFolder::fileOf(std::string const& slot, double time, Verdict verdict) const {
  std::string const when =
      times_ == Times::ofDay ? timeOfDay() : std::string(Kex::format("%.3f", time).view());
  return slot + '-' + when + '-' + verdictName(verdict) + std::string(kEnding);
}

void IncidentFolder::write(std::string const& file, std::string_view text) {
  folder_.reopen();
  makeRoom(file, text.size());
  folder_.write(file, text);
}

void IncidentFolder::makeRoom(std::string const& file, std::size_t bytes) {
  std::vector<KeptFile> files = incidents(path_);
  std::erase_if(files, [&](KeptFile const& kept) {
    bool const isUnfinished = !isIncident(kept.name);
    if (isUnfinished) {
      folder_.remove(kept.name);
    }
    return isUnfinished || kept.name == file;
  });
  std::uintmax_t total = bytes;
  for (KeptFile const& kept : files) {
    total += kept.bytes;
  }
  std::size_t count = files.size() + 1;
  for (KeptFile const& kept : files) {
    if (count <= kMostFiles && total <= kMostBytes) {
      return;
    }
    folder_.remove(kept.name);
    --count;
    total -= kept.bytes;
  }
}

}  // namespace Agent
