// FRU image files.
#include "agent/slots/FruImage.h"

#include <cerrno>
#include <cstdio>
#include <memory>

#include "agent/base/Error.h"
#include "agent/transport/SimulatedSupply.h"

namespace Agent {

namespace {

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

std::vector<Kex::U8> readAll(std::FILE* file, std::string const& name) {
  std::vector<Kex::U8> bytes(SimulatedSupply::kLongestImage + 1);
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
  if (std::ferror(file) != 0) {
    throw Failure(name + ": cannot read: " + systemError(errno));
  }
  if (bytes.empty()) {
    throw Failure(name + ": is empty, where a FRU image has 1 to 256 bytes");
  }
  if (bytes.size() > SimulatedSupply::kLongestImage) {
    throw Failure(name + ": is longer than the 256 bytes of a FRU image");
  }
  return bytes;
}

}  // namespace

std::vector<Kex::U8> readFruImage(std::string const& file) {
  if (file == "-") {
    return readAll(stdin, "standard input");
  }
  std::unique_ptr<std::FILE, Close> const opened(std::fopen(file.c_str(), "rbe"));
  if (!opened) {
    throw Failure(file + ": cannot open: " + systemError(errno));
  }
  return readAll(opened.get(), file);
}

}  // namespace Agent
