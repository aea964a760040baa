// FRU image files.
#include "agent/slots/FruImage.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>

#include "agent/base/Error.h"
#include "agent/base/InputFile.h"
#include "agent/transport/SimulatedSupply.h"

namespace Agent {

namespace {

/// In bytes: a dump of the largest memory with two-byte offsets.
constexpr std::size_t kLongestDump = std::size_t{64} << 10;

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

std::vector<Kex::U8> readAll(std::FILE* file, std::string const& name) {
  auto const bytes = std::make_unique_for_overwrite<Kex::U8[]>(kLongestDump + 1);
  std::size_t const length = std::fread(bytes.get(), 1, kLongestDump + 1, file);
  if (std::ferror(file) != 0) {
    throw Failure(name + (errno == EBADF ? ": is closed" : ": cannot read: " + systemError(errno)));
  }
  if (length == 0) {
    throw Failure(name + ": is empty, where a dump of a FRU memory has at least a byte");
  }
  if (length > kLongestDump) {
    throw Failure(name + ": is longer than " + std::to_string(kLongestDump) +
                  " bytes, the most of a dump of a FRU memory");
  }
  // A one-byte offset reaches no more.
  return {bytes.get(), bytes.get() + std::min(length, SimulatedSupply::kLongestImage)};
}

}  // namespace

std::vector<Kex::U8> readFruImage(std::string const& file) {
  if (file == "-") {
    return readAll(stdin, "standard input");
  }
  checkInputFile(file, kLongestDump);
  std::unique_ptr<std::FILE, Close> const opened(std::fopen(file.c_str(), "rbe"));
  if (!opened) {
    throw Failure(file + ": cannot open: " + systemError(errno));
  }
  return readAll(opened.get(), file);
}

}  // namespace Agent
