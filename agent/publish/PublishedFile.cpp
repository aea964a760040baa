// A file of a folder that is to hold something, or not to be there.
#include "agent/publish/PublishedFile.h"

#include <utility>

#include "agent/base/Error.h"

namespace Agent {

PublishedFile::PublishedFile(Folder& folder, std::string name, Ledger& ledger)
    : folder_(folder), name_(std::move(name)), trouble_(folder.pathOf(name_), ledger) {}

void PublishedFile::contentIs(std::optional<std::string> content) {
  content_ = std::move(content);
  settle();
}

bool PublishedFile::settle() {
  return trouble_.attempt([this] {
    if (!content_) {
      folder_.remove(name_);
    } else if (!holds()) {
      write(*content_);
    }
  });
}

bool PublishedFile::holds() const {
  // The stamp tells of changed rights too; the system's clock is too coarse for it to tell of all.
  return written_ && folder_.stamp(name_) == written_ && folder_.content(name_) == content_;
}

void PublishedFile::write(std::string const& content) {
  written_.reset();
  try {
    written_ = folder_.write(name_, content);
  } catch (Failure const& unwritten) {
    try {
      folder_.remove(name_);
    } catch (Failure const& unremoved) {
      throw Failure(unwritten.what() + std::string("; ") + unremoved.what());
    }
    throw;
  }
}

}  // namespace Agent
