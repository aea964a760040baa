// The command line of psu-agent.
#include "agent/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "agent/base/Ledger.h"
#include "agent/base/OutputReader.h"
#include "agent/commands/Command.h"
#include "agent/commands/Refusal.h"
#include "agent/commands/TraceOption.h"
#include "agent/slots/Plugin.h"

namespace Agent {

namespace {

/// Prints the help of the command that is named, or the program's.
Action prepareHelp(Parameters& command) {
  auto const name = std::make_shared<std::string>();
  command.add("COMMAND", *name, "The command; without it, the program's help");
  return [name, &program = *command.command().get_parent()](Globals const&) {
    if (!name->empty() && preparationOf(*name) == nullptr) {
      throw UsageError(unknownCommand(program, *name));
    }
    std::vector<char const*> words{"psu-agent", name->c_str(), "--help"};
    std::erase_if(words, [](std::string_view word) { return word.empty(); });
    return runCommandLine(static_cast<int>(words.size()), words.data());
  };
}

/// A command of the program.
struct Command {
  char const* name;
  /// What it does, for `--help`; a command without is for programs, and not shown.
  char const* purpose;
  Prepare* prepare;
  /// Lines that show it at work.
  std::vector<std::string_view> examples;
};

std::vector<Command> const& commands() {
  static std::vector<Command> const theCommands = {
      {"identify",
       "Print the FDL of each SOURCE's supply",
       &prepareIdentify,
       {"psu-agent identify supply.fru", "psu-agent identify --wait 10 i2c:7",
        "psu-agent identify --explain i2c:7"}},
      {"monitor",
       "Watch slots and print what changes, until --duration, SIGINT or SIGTERM",
       &prepareMonitor,
       {"psu-agent monitor --slot Left=i2c:7 --slot Right=i2c:8",
        "psu-agent monitor --slot Left=i2c:7 --duration 60 --record left.jsonl"}},
      {"simulate",
       "Run a scenario on virtual time and print what changes",
       &prepareSimulate,
       {"psu-agent simulate swap.json", "psu-agent simulate --transcript swap.json"}},
      {"report",
       "Show recordings as a picture: one page of HTML",
       &prepareReport,
       {"psu-agent report psu.jsonl -o psu.html"}},
      {"doctor",
       "Tell whether recognition can work on i2c adapters",
       &prepareDoctor,
       {"psu-agent doctor i2c:7"}},
      {"call",
       "Read, write, delete or call an attribute by name",
       &prepareCall,
       {"psu-agent call supply.fru",
        "psu-agent call supply.fru /PowerSupply1/EmersonPmbus serialNum"}},
      {"types",
       "Print the types that the plug-in brings, and the trace handles",
       &prepareTypes,
       {"psu-agent types", "psu-agent types --json"}},
      {"models",
       "Check model files and print what they add",
       &prepareModels,
       {"psu-agent models mine.json", "psu-agent models --new i2c:7 >mine.json"}},
      {"complete", "", &prepareComplete, {}},
      {"help", "Print what a command takes", &prepareHelp, {"psu-agent help identify"}},
  };
  return theCommands;
}

/// What stands at the end of a help text.
std::string footer(std::vector<std::string_view> const& examples) {
  std::string text = "Examples:\n";
  for (std::string_view const example : examples) {
    text.append("  $ ").append(example) += '\n';
  }
  text += "\nExit status:\n";
  for (StatusRow const& row : kStatuses) {
    std::string const number = std::to_string(static_cast<int>(row.status));
    text.append("  ").append(number).append(5 - number.size(), ' ').append(row.text) += '\n';
  }
  return text + "\nThe manual: man psu-agent; in the sources, man docs/psu-agent.1";
}

/// Makes `command` what the row says. What it takes is made when the command line comes to it: one
/// of them does.
void setUp(CLI::App& command, Command const& row, Action& action) {
  if (*row.purpose == '\0') {
    command.group("");
  }
  command.footer([&row] { return footer(row.examples); });
  command.preparse_callback([&action, &command, &row](std::size_t) {
    Parameters parameters(command);
    parameters.addHelp();
    command.callback([&action, work = row.prepare(parameters)] { action = work; });
  });
}

/// Does `work`; whatever ends it is told of and added to `ledger`. A usage error is told with where
/// to look, `help`.
template <class Work>
void guarded(Ledger& ledger, CLI::App const& program, Work work) {
  try {
    ledger.add(work());
  } catch (UsageError const& error) {
    CLI::App const* const command = commandOf(program);
    ledger.tell(Status::usage, std::string(error.what()) + "; see psu-agent help" +
                                   (command == nullptr ? "" : ' ' + command->get_name()));
  } catch (...) {
    ledger.tell(Status::failed, exceptionText(std::current_exception()));
  }
}

}  // namespace

Prepare* preparationOf(std::string_view name) {
  auto const row = std::ranges::find(commands(), name, &Command::name);
  return row == commands().end() ? nullptr : row->prepare;
}

Status runCommandLine(int argc, char const* const* argv) {
  CLI::App program("Recognises power supplies on SMBus and prints their FDL.", "psu-agent");
  program.set_version_flag("--version", "psu-agent " PSU_VERSION, "Print the version and end");
  // Each command would take a copy of it, though one of them at most is looked into.
  program.set_help_flag();
  program.require_subcommand(0, 1);
  program.fallthrough();
  program.footer([] {
    return footer({"psu-agent identify supply.fru", "psu-agent identify --explain i2c:7",
                   "psu-agent monitor --slot Left=i2c:7", "psu-agent help identify"});
  });
  Globals globals{.library = Plugin::defaultFile(), .models = {}};
  std::vector<std::string> traces;
  Action action;
  bool isQuiet = false;
  for (Command const& row : commands()) {
    setUp(*program.add_subcommand(row.name, row.purpose), row, action);
  }
  Parameters parameters(program);
  parameters.addHelp();
  parameters.add("--library", globals.library, "The plug-in's file").aPath("FILE");
  parameters
      .add("--models", globals.models.paths,
           "Model files, or folders of them, whose models are known as well")
      .notEmpty("PATH")
      .repeatable("PATH");
  parameters.addFlag("--strict", globals.models.isStrict,
                     "End where a model file is refused, which else is told of only");
  parameters.addFlag("--quiet", isQuiet,
                     "Tell of errors only, neither of warnings nor of progress");
  parameters
      .add("--trace", traces, "Show trace messages on stderr; psu-agent types lists the handles")
      .repeatable("HANDLE=LEVELS");
  Ledger ledger;
  guarded(ledger, program, [&] {
    std::span const arguments(argv + 1, static_cast<std::size_t>(argc < 1 ? 0 : argc - 1));
    try {
      checkValuesFollow(arguments);
      program.parse(argc, argv);
    } catch (CLI::Success const& success) {
      program.exit(success, std::cout, std::cerr);
      return Status::ok;
    } catch (CLI::ParseError const& error) {
      throw UsageError(refusalOf(program, error, arguments));
    }
    if (!action) {
      throw UsageError("a command is needed");
    }
    if (isQuiet) {
      tellErrorsOnly();
    }
    if (!traces.empty()) {
      Plugin::load(globals.library);
      turnTracesOn(traces);
    }
    return action(globals);
  });
  ledger.attempt([] { flushOut(); });
  return ledger.status();
}

}  // namespace Agent
