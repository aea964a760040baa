// How close a supply that a descriptor does not know came to its keys.
#include "agent/models/NearMiss.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "agent/models/ModelDescriptor.h"

namespace Agent {

namespace {

using Descriptors::KeyField;
using Texts = std::vector<std::string>;

/// What a field of a FRU area holds, in bytes.
constexpr std::size_t kLongestField = 63;
/// Blanks at the end of a key, at most.
constexpr std::size_t kMostBlanks = 16;

Texts otherBlanks(std::string const& text) {
  Texts texts;
  std::string padded(Descriptors::trimmed(text));
  for (std::size_t blanks = 0; blanks <= kMostBlanks; ++blanks, padded += ' ') {
    texts.push_back(padded);
  }
  std::string dense = text;
  std::erase(dense, ' ');
  texts.push_back(dense);
  return texts;
}

std::string converted(std::string text, int (*convert)(int)) {
  for (char& byte : text) {
    byte = static_cast<char>(convert(static_cast<unsigned char>(byte)));
  }
  return text;
}

/// Keys of files are known; those of the plug-in's descriptors are asked for in one case.
Texts otherCase(std::string const& text) {
  Texts texts{converted(text, &std::toupper), converted(text, &std::tolower)};
  auto const registry = Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
  for (auto walk = registry->supplements().begin(); walk; ++walk) {
    auto const* const descriptor = dynamic_cast<ModelDescriptor const*>((*walk).ptr());
    if (descriptor == nullptr) {
      continue;
    }
    for (std::string const& key : descriptor->model()->keys) {
      if (converted(key, &std::toupper) ==
          converted(std::string(Descriptors::trimmed(text)), &std::toupper)) {
        texts.push_back(key);
      }
    }
  }
  return texts;
}

Texts otherCharacter(std::string const& text) {
  Texts texts;
  for (std::size_t at = 0; at <= text.size(); ++at) {
    for (char byte = ' '; byte <= '~'; ++byte) {
      texts.push_back(std::string(text).insert(at, 1, byte));
    }
    if (at == text.size()) {
      break;
    }
    texts.push_back(std::string(text).erase(at, 1));
    for (char byte = ' '; byte <= '~'; ++byte) {
      texts.push_back(text);
      texts.back()[at] = byte;
    }
  }
  return texts;
}

/// The ways in which texts are near to each other, the nearest first.
constexpr struct {
  char const* difference;
  Texts (*near)(std::string const& text);
} kWays[] = {
    {"other blanks", &otherBlanks},
    {"another case", &otherCase},
    {"another character", &otherCharacter},
};

}  // namespace

NearMisses::NearMisses(Ipmi::ProductInfoArea const& fields) {
  std::string const partNumber(fields.partNumber().view());
  std::string const productName(fields.productName().view());
  add(KeyField::productName, partNumber, "the other field");
  add(KeyField::partNumber, productName, "the other field");
  for (auto const& way : kWays) {
    for (auto const& [field, text] :
         {std::pair(KeyField::partNumber, partNumber), {KeyField::productName, productName}}) {
      for (std::string const& near : way.near(text)) {
        add(field, near, way.difference);
      }
    }
  }
}

void NearMisses::add(KeyField field, std::string const& text, char const* difference) {
  if (text.size() <= kLongestField && !Descriptors::trimmed(text).empty()) {
    candidates_.push_back({.miss = {.field = field, .text = text, .difference = difference},
                           .question = Question(field, text)});
  }
}

std::optional<NearMiss> NearMisses::of(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor) const {
  QuietTraces const quiet;
  auto const found = std::ranges::find_if(
      candidates_, [&](Candidate const& one) { return one.question.isKnownTo(descriptor); });
  return found == candidates_.end() ? std::nullopt : std::optional(found->miss);
}

}  // namespace Agent
