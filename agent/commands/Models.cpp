// psu-agent models: checks model files and prints what they add.
#include "agent/commands/Command.h"

#include <iostream>
#include <memory>
#include <vector>

#include "agent/base/JsonObject.h"
#include "agent/base/Text.h"
#include "agent/models/Draft.h"
#include "agent/models/ModelFolder.h"
#include "agent/report/Report.h"
#include "agent/slots/Candidate.h"

namespace Agent {

namespace {

struct Options {
  bool isJson = false;
  std::string mfrId = "EMERSON";
  std::string unknown;
  std::vector<std::string> files;
};

template <class Enum>
std::string_view nameOf(std::span<std::string_view const> names, Enum value) {
  return names[static_cast<std::size_t>(value)];
}

std::string_view keyFieldName(Model const& model) {
  return nameOf(Descriptors::kKeyFieldNames, model.keyField);
}

std::string_view ruleName(Model const& model) {
  return nameOf(Descriptors::kMatchRuleNames, model.rule);
}

/// A line for a person.
std::string line(Model const& model) {
  std::string keys;
  for (std::string const& key : model.keys) {
    keys += (keys.empty() ? "" : ", ") + inQuotes(key);
  }
  return oneLine(model.file) + ": " + model.name + ": " + std::string(keyFieldName(model)) + ' ' +
         std::string(ruleName(model)) + ' ' + keys;
}

/// The object of a model, or of a file that is refused.
std::string json(std::string const& file, Model const* model, std::string const* refusal) {
  using Text = std::optional<std::string_view>;
  JsonObject object;
  object.add("file", file)
      .add("name", model != nullptr ? Text(model->name) : Text())
      .add("keyField", model != nullptr ? Text(keyFieldName(*model)) : Text())
      .add("rule", model != nullptr ? Text(ruleName(*model)) : Text());
  std::vector<std::string> keys;
  if (model != nullptr) {
    for (std::string const& key : model->keys) {
      keys.push_back(latin1ToUtf8(key));
    }
  }
  return object.add("keys", std::vector<std::string_view>(keys.begin(), keys.end()))
      .add("refused", refusal != nullptr ? Text(*refusal) : Text())
      .text();
}

/// Writes a draft for the supply that nobody knows.
Status draft(Options const& options, Globals const& globals) {
  if (!options.files.empty()) {
    throw UsageError("models: --new takes no FILE besides its SOURCE");
  }
  Source const source(options.unknown);
  Plugin const plugin(globals.library);
  ModelSet const set(globals.models);
  Loop loop(source.isLive() ? ClockKind::steadyClock : ClockKind::virtualClock);
  auto const candidate = detected(source, options.mfrId, plugin, loop);
  if (loop.isStopped()) {
    return loop.status();
  }
  auto const& supply = candidate->outcome();
  if (!supply) {
    throw Failure(source.text() + ": no outcome");
  }
  if (supply->verdict == Verdict::identified) {
    Kex::String8 const descriptor = supply->descriptor.value_or(Kex::String8());
    throw Failure(source.text() + ": is identified as " + std::string(descriptor.view()) +
                  " already");
  }
  if (supply->verdict != Verdict::unrecognised) {
    complain(source.text() + ": " + explanation(*supply));
    return statusOf(*supply);
  }
  std::vector<std::string> paths = globals.models.paths;
  paths.push_back(exampleModels());
  std::cout << Agent::draft(*supply->product, paths) << '\n';
  return Status::ok;
}

Status check(Options const& options, Globals const& globals) {
  ModelOptions all = globals.models;
  all.paths.insert(all.paths.end(), options.files.begin(), options.files.end());
  if (all.paths.empty()) {
    throw UsageError("models: a FILE or --models PATH is needed");
  }
  Plugin const plugin(globals.library);
  ModelSet const set(all);
  for (auto const& descriptor : set.descriptors()) {
    Model const& model = *descriptor->model();
    std::cout << (options.isJson ? json(model.file, &model, nullptr) : line(model)) << '\n';
  }
  if (options.isJson) {
    for (ModelSet::Refusal const& refusal : set.refusals()) {
      std::cout << json(refusal.file, nullptr, &refusal.why) << '\n';
    }
  }
  return set.refusals().empty() ? Status::ok : Status::usage;
}

}  // namespace

Action prepareModels(Parameters& command) {
  auto const options = std::make_shared<Options>();
  command.addFlag("--json", options->isJson, "Print one JSON object a line instead");
  command.add("FILE", options->files, "A model file, or a folder of them").notEmpty("FILE");
  addMfrIdOption(command, options->mfrId);
  command
      .add("--new", options->unknown,
           "Print a draft for SOURCE's supply, which is unrecognised, instead")
      .shownAs("SOURCE");
  return [options](Globals const& globals) {
    return options->unknown.empty() ? check(*options, globals) : draft(*options, globals);
  };
}

}  // namespace Agent
