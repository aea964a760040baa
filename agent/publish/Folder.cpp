// A folder that one program publishes files in, whatever others do to it.
#include "agent/publish/Folder.h"

#include <fcntl.h>
#include <sys/file.h>

#include <array>
#include <cerrno>
#include <filesystem>

#include "agent/base/Error.h"

namespace Agent {

namespace {

/// Where a file is written before it takes its place.
constexpr std::string_view kUnfinished = ".new";
std::string unfinished(std::string const& name) { return '.' + name + std::string(kUnfinished); }

Folder::Stamp stampOf(struct stat const& status) {
  return {.device = status.st_dev,
          .node = status.st_ino,
          .size = status.st_size,
          .seconds = status.st_ctim.tv_sec,
          .nanoseconds = status.st_ctim.tv_nsec};
}

/// The system's error number; 0 for none.
int writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t const written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) {
      return errno;
    }
    bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace

std::string_view Folder::nameOfUnfinished(std::string_view name) {
  bool const isUnfinished = name.starts_with('.') && name.ends_with(kUnfinished);
  return isUnfinished ? name.substr(1, name.size() - 1 - kUnfinished.size()) : std::string_view();
}

Folder::Folder(std::string const& path, Use use) : use_(use) {
  std::error_code error;
  path_ = std::filesystem::canonical(path, error);
  if (error) {
    throw Failure(path + ": cannot publish there: " + error.message());
  }
  open(0);
}

void Folder::open(int flags) {
  OwnedFile folder(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
  if (!folder.isOpen()) {
    throw Failure(path_ + ": cannot publish there: " + systemError(errno));
  }
  if (use_ == Use::alone && ::flock(folder.number(), LOCK_EX | LOCK_NB) != 0) {
    throw Failure(path_ + ": cannot publish there: " +
                  (errno == EWOULDBLOCK ? "another program does" : systemError(errno)));
  }
  folder_ = std::move(folder);
}

void Folder::reopen() {
  isLost_ = false;
  struct stat opened {};
  struct stat there {};
  if (::fstat(folder_.number(), &opened) == 0 && ::lstat(path_.c_str(), &there) == 0 &&
      opened.st_dev == there.st_dev && opened.st_ino == there.st_ino) {
    return;
  }
  constexpr mode_t kMode = 0755;
  isLost_ = ::mkdir(path_.c_str(), kMode) != 0 && errno != EEXIST;
  if (isLost_) {
    throw Failure(path_ + ": has gone and cannot be made: " + systemError(errno));
  }
  open(O_NOFOLLOW);
}

Folder::Stamp Folder::write(std::string const& name, std::string_view bytes) {
  constexpr char const* kWhat = "cannot be written";
  std::string const newName = unfinished(name);
  if (int const error = unlink(newName); error != 0 && error != ENOENT) {
    fail(newName, "is in the way and cannot be removed", error);
  }
  constexpr mode_t kMode = 0644;
  OwnedFile const file(::openat(folder_.number(), newName.c_str(),
                                O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kMode));
  if (!file.isOpen()) {
    fail(name, kWhat, errno);
  }
  struct stat status {};
  int error = writeAll(file.number(), bytes);
  if (error == 0 &&
      ::renameat(folder_.number(), newName.c_str(), folder_.number(), name.c_str()) != 0) {
    error = errno;
  }
  if (error == 0 && ::fstat(file.number(), &status) != 0) {
    error = errno;
  }
  if (error != 0) {
    unlink(newName);
    fail(name, kWhat, error);
  }
  return stampOf(status);
}

void Folder::remove(std::string const& name) {
  // What a run that was killed may have left.
  unlink(unfinished(name));
  if (int const error = unlink(name); error != 0 && error != ENOENT) {
    fail(name, "cannot be removed", error);
  }
}

int Folder::unlink(std::string const& name) {
  bool const isDone =
      ::unlinkat(folder_.number(), name.c_str(), 0) == 0 ||
      (errno == EISDIR && ::unlinkat(folder_.number(), name.c_str(), AT_REMOVEDIR) == 0);
  return isDone ? 0 : errno;
}

std::optional<Folder::Stamp> Folder::stamp(std::string const& name) const {
  struct stat status {};
  bool const isThere =
      ::fstatat(folder_.number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
      S_ISREG(status.st_mode);
  return isThere ? std::optional(stampOf(status)) : std::nullopt;
}

std::optional<std::string> Folder::content(std::string const& name) const {
  std::optional<Stamp> const there = stamp(name);
  std::array<char, std::size_t{64} << 10> bytes{};
  OwnedFile const file(
      ::openat(folder_.number(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  ssize_t const length =
      there && file.isOpen() ? ::read(file.number(), bytes.data(), bytes.size()) : -1;
  return length < 0 ? std::nullopt
                    : std::optional<std::string>(std::in_place, bytes.data(),
                                                 static_cast<std::size_t>(length));
}

void Folder::fail(std::string const& name, char const* what, int error) {
  ++failures_;
  throw Failure(pathOf(name) + ": " + what + ": " + systemError(error));
}

}  // namespace Agent
