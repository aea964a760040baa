// Whether a model would take another one's supplies.
#include "agent/models/Conflict.h"

#include "agent/base/Text.h"
#include "host/kex/type/KexType.h"

namespace Agent {

namespace {

using Descriptors::KeyField;

constexpr std::size_t kLongestField = 63;

/// `key` in both fields, as it is and with blanks around it.
std::vector<Question> questions(std::string const& key) {
  std::vector<Question> asked;
  for (std::string const& text : {key, ' ' + key, key + ' ', '\t' + key + '\t'}) {
    if (text.size() <= kLongestField) {
      asked.emplace_back(KeyField::partNumber, text);
      asked.emplace_back(KeyField::productName, text);
    }
  }
  return asked;
}

bool accepts(Ipmi::SupportedPowerSupplyDescriptorBase& descriptor, std::string const& key) {
  for (Question const& question : questions(key)) {
    if (question.isKnownTo(descriptor)) {
      return true;
    }
  }
  return false;
}

/// "DS3000", or "DS9000 of FILE".
std::string nameOf(Ipmi::SupportedPowerSupplyDescriptorBase const& descriptor) {
  std::string const name(descriptor.name().str().view());
  auto const* const added = dynamic_cast<ModelDescriptor const*>(&descriptor);
  return added == nullptr ? name : name + " of " + oneLine(added->model()->file);
}

}  // namespace

std::optional<std::string> conflict(Kex::Ptr<ModelDescriptor> const& added,
                                    std::vector<DescriptorPtr> const& others) {
  Model const& model = *added->model();
  for (DescriptorPtr const& other : others) {
    if (other->name() == added->name()) {
      return model.path + ".name: there is a " + nameOf(*other) + " already";
    }
  }
  for (std::size_t i = 0; i < model.keys.size(); ++i) {
    std::string const path = model.path + ".keys[" + std::to_string(i) + "]: ";
    for (Question const& question : questions(model.keys[i])) {
      for (DescriptorPtr const& other : others) {
        if (question.isKnownTo(*other)) {
          return path + inQuotes(model.keys[i]) + " is accepted by " + nameOf(*other);
        }
      }
    }
  }
  for (DescriptorPtr const& other : others) {
    auto const* const theirs = dynamic_cast<ModelDescriptor const*>(other.ptr());
    if (theirs == nullptr) {
      continue;
    }
    for (std::string const& key : theirs->model()->keys) {
      if (accepts(*added, key)) {
        return model.path + ".keys: they accept " + inQuotes(key) + ", a key of " + nameOf(*other);
      }
    }
  }
  return std::nullopt;
}

}  // namespace Agent
