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
  std::vector<Kex::U8> bytes(kLongestDump + 1);
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
  if (std::ferror(file) != 0) {
    throw Failure(name + ": cannot read: " + systemError(errno));
  }
  if (bytes.empty()) {
    throw Failure(name + ": is empty, where a dump of a FRU memory has at least a byte");
  }
  if (bytes.size() > kLongestDump) {
    throw Failure(name + ": is longer than " + std::to_string(kLongestDump) +
                  " bytes, the most of a dump of a FRU memory");
  }
  // A one-byte offset reaches no more.
  bytes.resize(std::min(bytes.size(), SimulatedSupply::kLongestImage));
  return bytes;
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
