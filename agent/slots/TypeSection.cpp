// The list of types that a plug-in file carries.
#include "agent/slots/TypeSection.h"

#include <fcntl.h>
#include <gelf.h>
#include <libelf.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>

#include "agent/base/Error.h"

namespace Agent {

namespace {

constexpr std::string_view kSection = ".kex.type";

/// A file that is open for reading.
class InputFile {
 public:
  // A pipe that nobody writes must not keep us waiting.
  explicit InputFile(std::string const& name)
      : descriptor_(::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (descriptor_ < 0) {
      throw Failure(name + ": cannot open: " + systemError(errno));
    }
  }
  InputFile(InputFile const&) = delete;
  InputFile& operator=(InputFile const&) = delete;
  ~InputFile() { ::close(descriptor_); }

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

struct EndElf {
  void operator()(Elf* elf) const { elf_end(elf); }
};

bool isSection(Elf* elf, Elf_Scn* section, std::size_t names) {
  GElf_Shdr header;
  if (gelf_getshdr(section, &header) == nullptr) {
    return false;
  }
  char const* const name = elf_strptr(elf, names, header.sh_name);
  return name != nullptr && name == kSection;
}

/// The section's bytes as they stand in the file; empty when it has none there.
std::string_view sectionBytes(Elf_Scn* section) {
  Elf_Data const* const data = elf_rawdata(section, nullptr);
  return data == nullptr || data->d_buf == nullptr
             ? std::string_view()
             : std::string_view(static_cast<char const*>(data->d_buf), data->d_size);
}

std::vector<std::string> namesIn(std::string_view bytes) {
  constexpr char kNul = '\0';
  std::vector<std::string> names;
  for (std::size_t start = bytes.find_first_not_of(kNul); start != std::string_view::npos;
       start = bytes.find_first_not_of(kNul, start)) {
    std::string_view const name = bytes.substr(start, bytes.find(kNul, start) - start);
    names.emplace_back(name);
    start += name.size();
  }
  return names;
}

}  // namespace

std::vector<std::string> readTypeSection(std::string const& file) {
  InputFile const input(file);
  elf_version(EV_CURRENT);
  std::unique_ptr<Elf, EndElf> const elf(elf_begin(input.descriptor(), ELF_C_READ, nullptr));
  GElf_Ehdr header;
  if (!elf || elf_kind(elf.get()) != ELF_K_ELF || gelf_getehdr(elf.get(), &header) == nullptr ||
      header.e_type != ET_DYN) {
    throw Failure(file + ": is not an ELF library");
  }
  std::size_t names = 0;
  Elf_Scn* section = nullptr;
  if (elf_getshdrstrndx(elf.get(), &names) == 0) {
    do {
      section = elf_nextscn(elf.get(), section);
    } while (section != nullptr && !isSection(elf.get(), section, names));
  }
  if (section == nullptr) {
    throw Failure(file + ": is no plug-in: it has no section " + std::string(kSection));
  }
  std::vector<std::string> types = namesIn(sectionBytes(section));
  if (types.empty()) {
    throw Failure(file + ": is no plug-in: its section " + std::string(kSection) +
                  " names no type");
  }
  return types;
}

}  // namespace Agent
