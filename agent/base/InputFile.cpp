// What a file must be to be read as input, and what must not be done to it.
#include "agent/base/InputFile.h"

#include <filesystem>

#include "agent/base/Error.h"

namespace Agent {

void checkInputFile(std::string const& file, std::uintmax_t most) {
  std::error_code error;
  auto const status = std::filesystem::status(file, error);
  if (error) {
    throw Failure(file + ": cannot open: " + systemError(error.value()));
  }
  if (!std::filesystem::is_regular_file(status)) {
    throw Failure(file + ": is no regular file");
  }
  auto const size = std::filesystem::file_size(file, error);
  if (error) {
    throw Failure(file + ": cannot open: " + systemError(error.value()));
  }
  if (size > most) {
    throw Failure(file + ": has " + std::to_string(size) + " bytes, and may have at most " +
                  std::to_string(most));
  }
}

void checkIsNotRead(std::string const& option, std::string const& written,
                    std::string const& read) {
  std::error_code error;
  // By its inode: a file has several names.
  if (std::filesystem::is_regular_file(written, error) &&
      std::filesystem::equivalent(written, read, error)) {
    throw UsageError(option + ": " + written + " is read as well, as " + read +
                     ", and would be overwritten");
  }
}

}  // namespace Agent
