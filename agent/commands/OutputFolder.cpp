// A folder with the FDL of each source in a file of its own.
#include "agent/commands/OutputFolder.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

#include "agent/base/Error.h"
#include "agent/base/InputFile.h"

namespace Agent {

namespace {

std::string nameOf(std::string const& source) {
  constexpr std::string_view kKept =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
  if (source == "-") {
    return "stdin";
  }
  std::filesystem::path const file = std::filesystem::path(source).filename();
  // What follows a # is the name of a slot.
  std::string name =
      file.string().find('#') == std::string::npos ? file.stem().string() : file.string();
  std::ranges::replace_if(
      name, [&](char letter) { return kKept.find(letter) == std::string_view::npos; }, '-');
  return name;
}

void check(std::filesystem::path const& file, std::error_code const& error) {
  if (error) {
    throw Failure(file.string() + ": cannot be written: " + systemError(error.value()));
  }
}

}  // namespace

OutputFolder::OutputFolder(std::filesystem::path const& folder,
                           std::vector<Source> const& sources) {
  for (Source const& source : sources) {
    std::filesystem::path const file = folder / (nameOf(source.text()) + ".fdl");
    if (auto const same = std::ranges::find(files_, file); same != files_.end()) {
      throw UsageError(
          "--output: " + sources[static_cast<std::size_t>(same - files_.begin())].text() + " and " +
          source.text() + " have the same file, " + file.string());
    }
    for (Source const& read : sources) {
      checkIsNotRead("--output", file.string(), read.file());
    }
    files_.push_back(file);
  }
  std::error_code error;
  if (std::filesystem::exists(folder, error)) {
    if (!std::filesystem::is_directory(folder, error)) {
      throw Failure(folder.string() + ": " + systemError(ENOTDIR));
    }
  } else if (!std::filesystem::create_directory(folder, error)) {
    throw Failure(folder.string() + ": " + systemError(error.value()));
  }
}

void OutputFolder::fdlIs(std::size_t source, std::string_view fdl) const {
  std::filesystem::path const& file = files_[source];
  std::error_code error;
  if (fdl.empty()) {
    std::filesystem::remove(file, error);
    return check(file, error);
  }
  std::filesystem::path unfinished = file;
  unfinished += ".new";
  std::ofstream out(unfinished, std::ios::binary | std::ios::trunc);
  out << fdl;
  out.close();
  if (!out) {
    check(file, {errno, std::generic_category()});
  }
  std::filesystem::rename(unfinished, file, error);
  check(file, error);
}

}  // namespace Agent
