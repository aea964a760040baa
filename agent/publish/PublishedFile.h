// A file of a folder that is to hold something, or not to be there.
#pragma once

#include <optional>
#include <string>

#include "agent/base/Trouble.h"
#include "agent/publish/Folder.h"

namespace Agent {

/// Keeps one file of a folder as it is to be, whatever others do to it. What fails is told of once,
/// and a file that cannot be replaced is removed.
class PublishedFile {
 public:
  /// `folder` and `ledger` must outlive the file. Nothing is done to it yet.
  PublishedFile(Folder& folder, std::string name, Ledger& ledger);

  std::string const& name() const { return name_; }
  /// What the file holds from now on; none when there is to be no file.
  void contentIs(std::optional<std::string> content);
  /// Tries again what failed, and puts right what others changed. Whether all is as it is to be.
  bool settle();

 private:
  bool holds() const;
  void write(std::string const& content);

  Folder& folder_;
  std::string name_;
  std::optional<std::string> content_;
  /// As it was written; none where that has to be done.
  std::optional<Folder::Stamp> written_;
  Trouble trouble_;
};

}  // namespace Agent
