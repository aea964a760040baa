// Which i2c adapters this machine has, and which of them a text means.
#include "agent/transport/LinuxBus.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "agent/base/Text.h"

namespace Agent {

namespace fs = std::filesystem;
using Smbus::ErrorKind;

namespace {

/// Adapter numbers that the kernel can give.
constexpr unsigned kAdapters = 1U << 20;

/// The number that `digits` are, written the one way: no sign, no leading zero, nothing behind it.
std::optional<unsigned> numberOf(std::string_view digits) {
  unsigned number = 0;
  auto const [end, error] = std::from_chars(digits.begin(), digits.end(), number);
  bool const fits = error == std::errc() && std::to_string(number) == digits && number < kAdapters;
  return fits ? std::optional(number) : std::nullopt;
}

/// N, where `path` ends in `i2c-N`.
std::optional<unsigned> numberAtEnd(fs::path const& path) {
  constexpr std::string_view kPrefix = "i2c-";
  std::string const name = path.filename();
  return name.starts_with(kPrefix) ? numberOf(std::string_view(name).substr(kPrefix.size()))
                                   : std::nullopt;
}

/// The numbers of adapters whose folders, or links to them, are in `folder`; by size.
std::vector<unsigned> numbersIn(fs::path const& folder) {
  std::vector<unsigned> numbers;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    if (auto const number = numberAtEnd(at->path())) {
      numbers.push_back(*number);
    }
  }
  std::ranges::sort(numbers);
  return numbers;
}

char const* const kDevices = "/sys/bus/i2c/devices";

fs::path folderOf(unsigned number) { return fs::path(kDevices) / linuxBusName(number); }

std::string adapterName(unsigned number) {
  std::ifstream in(folderOf(number) / "name");
  std::string name;
  std::getline(in, name);
  return name;
}

LinuxNode nodeOf(unsigned number) { return {number, "/dev/" + linuxBusName(number)}; }

std::string inWords(std::vector<LinuxAdapterEntry> const& adapters) {
  std::string text;
  for (LinuxAdapterEntry const& adapter : adapters) {
    text +=
        (text.empty() ? "" : ", ") + linuxBusName(adapter.number) + ' ' + inQuotes(adapter.name);
  }
  return text;
}

}  // namespace

std::string linuxBusName(unsigned number) { return "i2c-" + std::to_string(number); }

std::vector<LinuxAdapterEntry> linuxAdapters() {
  std::vector<LinuxAdapterEntry> adapters;
  for (unsigned const number : numbersIn(kDevices)) {
    LinuxAdapterEntry& adapter = adapters.emplace_back();
    adapter.number = number;
    adapter.name = adapterName(number);
    std::error_code error;
    adapter.path = fs::canonical(folderOf(number), error);
  }
  return adapters;
}

std::optional<LinuxAdapterEntry> linuxAdapter(unsigned number) {
  std::vector<LinuxAdapterEntry> const adapters = linuxAdapters();
  auto const found = std::ranges::find(adapters, number, &LinuxAdapterEntry::number);
  return found == adapters.end() ? std::nullopt : std::optional(*found);
}

std::string linuxAdaptersText() {
  std::string const adapters = inWords(linuxAdapters());
  return adapters.empty() ? "there is no i2c adapter here; is its driver loaded?"
                          : "there are " + adapters + "; modprobe i2c-dev makes their nodes";
}

LinuxBus::LinuxBus(std::string const& target) : name_("i2c:" + target) {
  constexpr std::string_view kNode = "/dev/i2c-";
  constexpr std::string_view kName = "name=";
  std::string_view const text = target;
  if (auto const number = numberOf(text.substr(text.starts_with(kNode) ? kNode.size() : 0))) {
    number_ = *number;
    name_ = linuxBusName(number_);
  } else if (text.starts_with(kName) && text.size() > kName.size()) {
    kind_ = Kind::name;
    text_ = text.substr(kName.size());
  } else if (text.find('/') != std::string_view::npos && !text.starts_with(kName)) {
    kind_ = Kind::path;
    text_ = text;
  } else {
    throw UsageError("i2c:" + oneLine(target) + " is not i2c:N with N from 0 to " +
                     std::to_string(kAdapters - 1) + ", i2c:PATH with a / in it, or i2c:name=TEXT");
  }
}

LinuxNode LinuxBus::node() const {
  switch (kind_) {
    case Kind::number: break;
    case Kind::path: return nodeAtPath();
    case Kind::name: return nodeOfName();
  }
  return nodeOf(number_);
}

std::string LinuxBus::identity() const {
  try {
    return linuxBusName(node().number);
  } catch (BusFailure const&) {
    return name_;
  }
}

LinuxNode LinuxBus::nodeAtPath() const {
  constexpr unsigned kMajor = 89;  // of all nodes that i2c-dev makes
  struct stat status {};
  if (::stat(text_.c_str(), &status) != 0) {
    std::string const why = systemError(errno);
    throw gone(why + "; " + linuxAdaptersText());
  }
  if (S_ISCHR(status.st_mode) && major(status.st_rdev) == kMajor) {
    return {minor(status.st_rdev), text_};
  }
  std::error_code error;
  fs::path const folder = S_ISDIR(status.st_mode) ? fs::canonical(text_, error) : fs::path();
  if (auto const number = numberAtEnd(folder)) {
    return nodeOf(*number);
  }
  std::vector<unsigned> const inside = numbersIn(folder);
  if (inside.size() != 1) {
    throw gone(inside.empty() ? "no i2c adapter; " + linuxAdaptersText()
                              : "more than one i2c adapter in there");
  }
  return nodeOf(inside.front());
}

LinuxNode LinuxBus::nodeOfName() const {
  // Each transaction asks: of the adapters no more is read than it takes.
  std::vector<unsigned> numbers = numbersIn(kDevices);
  std::erase_if(numbers, [this](unsigned number) { return adapterName(number) != text_; });
  if (numbers.size() == 1) {
    return nodeOf(numbers.front());
  }
  std::vector<LinuxAdapterEntry> adapters = linuxAdapters();
  std::erase_if(adapters, [this](auto const& adapter) { return adapter.name != text_; });
  throw gone(numbers.empty() ? "no i2c adapter is called so; " + linuxAdaptersText()
                             : "several are called so: " + inWords(adapters));
}

BusFailure LinuxBus::gone(std::string const& why) const {
  return {ErrorKind::busGone, oneLine(name_) + ": " + why};
}

}  // namespace Agent
