// The model files in use, and the descriptors that they add to the registry.
#include "agent/models/ModelSet.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "agent/base/JsonDocument.h"
#include "agent/base/Text.h"
#include "agent/models/Conflict.h"
#include "agent/models/ModelFile.h"
#include "agent/models/ModelFolder.h"

namespace Agent {

namespace {

constexpr std::size_t kMostModels = 200;

Ipmi::SupportedPowerSupplyRegistry& registry() {
  return *Kex::Entity::singleton<Ipmi::SupportedPowerSupplyRegistry>();
}

/// What `failure` says behind the name that it begins with.
std::string behind(std::string const& name, Failure const& failure) {
  return std::string(failure.what()).substr(name.size() + 2);
}

std::string textOf(ModelSet::Refusal const& refusal) {
  return oneLine(refusal.file) + ": " + refusal.why;
}

}  // namespace

ModelSet::ModelSet(ModelOptions const& options) : paths_(options.paths) {
  read();
  for (Refusal const& refusal : refusals_) {
    if (options.isStrict && &refusal == &refusals_.back()) {
      throw UsageError(textOf(refusal));
    }
    complain(textOf(refusal));
  }
}

void ModelSet::reload() {
  read();
  for (Refusal const& refusal : refusals_) {
    complain(textOf(refusal));
  }
}

void ModelSet::read() {
  QuietTraces const quiet;
  refusals_.clear();
  before_.clear();
  for (auto const& descriptor : std::exchange(descriptors_, {})) {
    before_.push_back(descriptor->model());
    registry().powerSupplyDescriptorDel(descriptor->name());
  }
  std::vector<DescriptorPtr> asked;
  for (auto walk = registry().powerSupplyDescriptors().begin(); walk; ++walk) {
    asked.push_back(*walk);
  }
  for (std::string const& path : paths_) {
    std::vector<std::string> files;
    try {
      files = modelFilesIn(path);
    } catch (Failure const& failure) {
      refusals_.push_back({.file = path, .why = behind(path, failure)});
    }
    for (std::string const& file : files) {
      add(modelsOf(file), asked);
    }
  }
}

/// The models that `file` adds; those that it added before where it is refused.
Models ModelSet::modelsOf(std::string const& file) {
  std::string why;
  try {
    return parseModels(parseJson(readModelText(file)), file);
  } catch (UsageError const& error) {
    why = error.what();
  } catch (Failure const& failure) {
    why = behind(file, failure);
  }
  Models kept;
  std::ranges::copy_if(before_, std::back_inserter(kept),
                       [&](ModelPtr const& model) { return model->file == file; });
  refusals_.push_back(
      {.file = file, .why = why + (kept.empty() ? "" : "; its models stay as they were")});
  return kept;
}

/// Registers all of a file's models, or none; `asked` are the descriptors that there are already.
void ModelSet::add(Models const& models, std::vector<DescriptorPtr>& asked) {
  std::vector<Kex::Ptr<ModelDescriptor>> added;
  std::size_t const known = asked.size();
  for (ModelPtr const& model : models) {
    added.push_back(newDescriptor(model));
    auto fault = conflict(added.back(), asked);
    if (!fault && descriptors_.size() + added.size() > kMostModels) {
      fault = model->path + ": there are more than " + std::to_string(kMostModels) + " models";
    }
    if (fault) {
      asked.resize(known);
      refusals_.push_back({.file = model->file, .why = *fault});
      return;
    }
    asked.emplace_back(added.back());
  }
  for (auto const& descriptor : added) {
    typeModelIs(descriptor->model());
    registry().supplementIs(descriptor);
    descriptors_.push_back(descriptor);
  }
}

}  // namespace Agent
