// The figures of a run as a file, for a monitoring system to read.
#include "agent/publish/MetricsFile.h"

#include <filesystem>

namespace Agent {

namespace {

std::string folderOf(std::filesystem::path const& path) {
  return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

}  // namespace

MetricsFile::MetricsFile(std::string const& path, Meter& meter, Publisher const* publisher,
                         Ledger& ledger)
    : meter_(meter),
      publisher_(publisher),
      folder_(folderOf(path), Folder::Use::shared),
      trouble_(folderOf(path), ledger),
      file_(folder_, std::filesystem::path(path).filename(), ledger),
      timer_([this] { write(); }) {
  meter_.onChangeIs([this] { write(); });
  write();
}

MetricsFile::~MetricsFile() {
  meter_.onChangeIs({});
  file_.contentIs(std::nullopt);
}

void MetricsFile::write() {
  Metrics metrics = meter_.metrics();
  if (publisher_ != nullptr) {
    metrics.publishingFailures = publisher_->failures();
  }
  if (trouble_.attempt([this] { folder_.reopen(); })) {
    file_.contentIs(metricsText(metrics));
  }
  timer_.startIn(kInterval);
}

}  // namespace Agent
