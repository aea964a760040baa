// psu-agent complete: what may stand at the end of a command line, for a shell's completion.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <ranges>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/commands/Command.h"
#include "agent/commands/CommandLine.h"
#include "agent/recording/Recording.h"
#include "agent/slots/Plugin.h"
#include "agent/slots/Source.h"
#include "host/kex/trace/Trace.h"

namespace Agent {

namespace {

/// A command line up to its last word, which is the one to complete.
struct CommandLine {
  /// The command that was named; the program before that.
  CLI::App const* command;
  Globals globals;
  std::vector<std::string> positionals{};
  /// Whose value the last word is; none where it may be an option or what stands by itself.
  CLI::Option const* option = nullptr;
};

void offer(std::string const& text, std::string const& description = {}) {
  std::cout << text << (description.empty() ? "" : "\t") << description << '\n';
}

/// The shell completes file names, or those of folders, behind `before`.
void offerFiles(std::string const& before) { offer(":files", before); }
void offerFolders(std::string const& before) { offer(":folders", before); }

void offerBuses(std::string const& before) {
  std::error_code error;
  for (auto const& adapter : std::filesystem::directory_iterator("/sys/class/i2c-dev", error)) {
    constexpr std::string_view kNode = "i2c-";
    std::string const node = adapter.path().filename();
    std::string name;
    std::getline(std::ifstream(adapter.path() / "name"), name);
    offer(before + "i2c:" + node.substr(std::min(kNode.size(), node.size())), name);
  }
}

void offerRecordingSlots(std::string const& before, std::string const& file) {
  Recording const recording(file);
  std::string const start = before + file + '#';
  for (auto const& [slot, recorded] : recording.slots()) {
    if (!recorded.transactions.empty()) {
      offer(start + slot);
    }
  }
}

void offerSources(std::string_view word, std::string const& before) {
  constexpr std::string_view kReplay = "replay:";
  std::string_view const source = word.substr(before.size());
  if (!source.starts_with(kReplay)) {
    offerBuses(before);
    offer(before + std::string(kReplay), "a recording");
    return offerFiles(before);
  }
  std::string_view const file = source.substr(kReplay.size());
  std::string const intoFile = before + std::string(kReplay);
  offerFiles(intoFile);
  if (std::string const recording(file.substr(0, file.find('#')));
      std::filesystem::is_regular_file(recording)) {
    offerRecordingSlots(intoFile, recording);
  }
}

using Offer = void(CommandLine const& line, std::string const& word);

void offerObjects(CommandLine const& line, std::string const&) {
  // A bus is left alone while somebody types.
  if (std::string const& source = line.positionals.front(); !Source(source).isLive()) {
    char const* const call[] = {"psu-agent", "--library", line.globals.library.c_str(), "call",
                                source.c_str()};
    runCommandLine(std::size(call), call);
  }
}

void offerTraceHandles(CommandLine const& line, std::string const&) {
  Plugin const plugin(line.globals.library);
  for (Kex::String8 const& name : Kex::TraceHandle::names()) {
    offer(std::string(name.view()) + '=');
  }
}

/// A kind of value, by the name of what stands by itself, or by what help shows behind an option.
struct Value {
  std::string_view name;
  Offer* offer;
};

constexpr Value kValues[] = {
    {"SOURCE", [](CommandLine const&, std::string const& word) { offerSources(word, ""); }},
    {"--NAME=SOURCE",
     [](CommandLine const&, std::string const& word) {
       if (std::size_t const equals = word.find('='); equals != std::string::npos) {
         offerSources(word, word.substr(0, equals + 1));
       }
     }},
    {"PATH", &offerObjects},
    {"SCENARIO", [](CommandLine const&, std::string const&) { offerFiles(""); }},
    {"RECORDING", [](CommandLine const&, std::string const&) { offerFiles(""); }},
    {"FILE", [](CommandLine const&, std::string const&) { offerFiles(""); }},
    {"--FILE", [](CommandLine const&, std::string const&) { offerFiles(""); }},
    {"--HANDLE=LEVELS", &offerTraceHandles},
    {"--PATH", [](CommandLine const&, std::string const&) { offerFiles(""); }},
    {"--DIR", [](CommandLine const&, std::string const&) { offerFolders(""); }},
};

void offerValue(CLI::Option const& option, CommandLine const& line, std::string const& word) {
  std::string const& text = option.get_option_text();
  std::string const name =
      option.get_positional() ? option.get_name(true) : "--" + text.substr(0, text.find(' '));
  if (auto const* const value = std::ranges::find(kValues, name, &Value::name);
      value != std::end(kValues)) {
    value->offer(line, word);
  }
}

void offerOptions(CLI::App const& app) {
  for (CLI::Option const* const option : app.get_options()) {
    for (std::string const& name : option->get_lnames()) {
      offer("--" + name, option->get_description());
    }
  }
}

void offerCommands(CLI::App const& program) {
  auto const isShown = [](CLI::App const* app) { return !app->get_group().empty(); };
  for (CLI::App const* const command : program.get_subcommands(isShown)) {
    offer(command->get_name(), command->get_description());
  }
}

/// What stands by itself behind those that stand there already; none when no more is taken.
CLI::Option const* nextPositional(CommandLine const& line) {
  auto const options =
      line.command->get_options([](CLI::Option const* option) { return option->get_positional(); });
  if (line.positionals.size() < options.size()) {
    return options[line.positionals.size()];
  }
  bool const isLastTakingMore = !options.empty() && options.back()->get_items_expected_max() > 1;
  return isLastTakingMore ? options.back() : nullptr;
}

/// Reads all words but the last.
CommandLine parse(CLI::App& program, std::vector<std::string> const& words) {
  CommandLine line{.command = &program, .globals = {.library = Plugin::defaultFile()}};
  for (std::string const& word : words | std::views::take(words.size() - 1)) {
    if (CLI::Option const* const option = std::exchange(line.option, nullptr)) {
      if (option->check_lname("library")) {
        line.globals.library = word;
      }
    } else if (word.starts_with("-")) {
      CLI::Option const* named = line.command->get_option_no_throw(word);
      named = named == nullptr ? program.get_option_no_throw(word) : named;
      line.option = named != nullptr && named->get_items_expected_max() > 0 ? named : nullptr;
    } else if (line.command != &program) {
      line.positionals.push_back(word);
    } else if (Prepare* const prepare = preparationOf(word)) {
      CLI::App& command = *program.get_subcommand(word);
      Parameters parameters(command);
      parameters.addHelp();
      prepare(parameters);
      line.command = &command;
    }
  }
  return line;
}

Status complete(CLI::App& program, std::vector<std::string> const& words) {
  std::string const& word = words.back();
  CommandLine const line = parse(program, words);
  if (line.option != nullptr) {
    offerValue(*line.option, line, word);
  } else if (word.starts_with("-")) {
    offerOptions(program);
    if (line.command != &program) {
      offerOptions(*line.command);
    }
  } else if (line.command == &program) {
    offerCommands(program);
  } else if (CLI::Option const* const positional = nextPositional(line)) {
    offerValue(*positional, line, word);
  }
  return Status::ok;
}

}  // namespace

Action prepareComplete(Parameters& command) {
  auto const words = std::make_shared<std::vector<std::string>>();
  command.add("WORD", *words, "The command line behind the program, up to the cursor").required();
  return [words, &program = *command.command().get_parent()](Globals const&) {
    return complete(program, *words);
  };
}

}  // namespace Agent
