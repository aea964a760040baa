// A folder that one program publishes files in, whatever others do to it.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

#include "agent/base/OwnedFile.h"
#include "host/kex/base/Types.h"

namespace Agent {

/// An opened folder. Names are those of files directly
/// in it; no link is followed. A reader of a file sees all of it or none. What fails throws a
/// `Failure` with the path and the system's cause.
class Folder {
 public:
  /// What tells one content of a file from a later one.
  struct Stamp {
    dev_t device;
    ino_t node;
    off_t size;
    /// Of the last change, of the file's attributes as well: seconds and nanoseconds.
    time_t seconds;
    long nanoseconds;
    bool operator==(Stamp const&) const = default;
  };

  /// Who may write files there.
  enum class Use : unsigned char {
    alone,   ///< no other program that publishes: the folder is locked
    shared,  ///< anybody
  };

  /// Opens `path`, which must be a folder.
  explicit Folder(std::string const& path, Use use = Use::alone);

  /// Opens the folder anew, and makes it where it is missing, when it is not the one at its path
  /// any more.
  void reopen();
  /// Whether the folder has gone and could not be made.
  bool isLost() const { return isLost_; }
  /// Writes a file in place of the one before, which stays when that fails.
  Stamp write(std::string const& name, std::string_view bytes);
  /// What a file was to be called that a program was killed at while it wrote it as `name`; empty
  /// where `name` is none of such a file.
  static std::string_view nameOfUnfinished(std::string_view name);
  /// Takes a file, a link or an empty folder away, if there is one.
  void remove(std::string const& name);
  /// A regular file's stamp; none when there is none, or something else.
  std::optional<Stamp> stamp(std::string const& name) const;
  /// What a regular file of at most 64 KiB holds; none when there is none, or something else.
  std::optional<std::string> content(std::string const& name) const;

  /// How often a file could not be written or removed.
  Kex::U64 failures() const { return failures_; }
  std::string pathOf(std::string const& name) const { return path_ + '/' + name; }

 private:
  void open(int flags);
  /// The system's error number; 0 for none.
  int unlink(std::string const& name);
  [[noreturn]] void fail(std::string const& name, char const* what, int error);

  std::string path_;
  Use use_;
  bool isLost_ = false;
  Kex::U64 failures_ = 0;
  OwnedFile folder_;
};

}  // namespace Agent
