// The FDL of each slot as a file, for others to read.
#include "agent/slots/Publisher.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "agent/base/Error.h"

namespace Agent {

namespace {

void check(std::filesystem::path const& file, std::error_code const& error) {
  if (error) {
    throw Failure(file.string() + ": " + error.message());
  }
}

}  // namespace

bool isSlotName(std::string_view name) {
  constexpr std::string_view kAllowed =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
  return !name.empty() && name.front() != '.' &&
         name.find_first_not_of(kAllowed) == std::string_view::npos;
}

Publisher::Publisher(std::filesystem::path folder) : folder_(std::move(folder)) {
  std::error_code error;
  if (!std::filesystem::is_directory(folder_, error)) {
    throw Failure(folder_.string() + ": " + (error ? error.message() : "not a folder"));
  }
}

Publisher::~Publisher() {
  for (std::string const& slot : published_) {
    std::error_code ignored;
    std::filesystem::remove(file(slot), ignored);
  }
}

void Publisher::fdlIs(std::string const& slot, std::string_view fdl) {
  std::filesystem::path const unfinished = folder_ / ("." + slot + ".fdl.new");
  std::ofstream out(unfinished, std::ios::binary | std::ios::trunc);
  out << fdl;
  out.close();
  std::error_code error;
  if (!out) {
    std::filesystem::remove(unfinished, error);
    throw Failure(file(slot).string() + ": cannot be written");
  }
  std::filesystem::rename(unfinished, file(slot), error);
  check(file(slot), error);
  published_.insert(slot);
}

void Publisher::fdlDel(std::string const& slot) {
  published_.erase(slot);
  std::error_code error;
  std::filesystem::remove(file(slot), error);
  check(file(slot), error);
}

std::filesystem::path Publisher::file(std::string const& slot) const {
  return folder_ / (slot + ".fdl");
}

}  // namespace Agent
