// The command line of psu-agent.
#include "agent/commands/CommandLine.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <exception>
#include <iostream>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "agent/base/Ledger.h"
#include "agent/commands/Command.h"
#include "agent/slots/Plugin.h"
#include "host/kex/trace/Trace.h"

namespace Agent {

namespace {

/// A command of the program.
struct Command {
  char const* name;
  /// What it does, for `--help`; a command without is for programs, and not shown.
  char const* purpose;
  Prepare* prepare;
};

constexpr Command kCommands[] = {
    {"identify", "Print the FDL of each SOURCE's supply", &prepareIdentify},
    {"monitor", "Watch slots and print what changes, until --duration, SIGINT or SIGTERM",
     &prepareMonitor},
    {"simulate", "Run a scenario on virtual time and print what changes", &prepareSimulate},
    {"report", "Show recordings as a picture: one page of HTML", &prepareReport},
    {"doctor", "Tell whether recognition can work on i2c adapters", &prepareDoctor},
    {"call", "Read, write, delete or call an attribute by name", &prepareCall},
    {"types", "Print the types that the plug-in brings", &prepareTypes},
    {"complete", "", &prepareComplete},
};

constexpr unsigned kTraceLevels = 32;

/// The bits of `LEVEL,LEVEL...`; none when that does not make sense.
std::optional<Kex::U32> levelsOf(std::string_view text) {
  Kex::U32 bits = 0;
  for (bool isLast = false; !isLast;) {
    std::size_t const comma = text.find(',');
    isLast = comma == std::string_view::npos;
    unsigned level = kTraceLevels;
    std::string_view const number = text.substr(0, comma);
    auto const [end, error] = std::from_chars(number.begin(), number.end(), level);
    if (error != std::errc() || end != number.end() || level >= kTraceLevels) {
      return std::nullopt;
    }
    bits |= Kex::U32{1} << level;
    text.remove_prefix(isLast ? 0 : comma + 1);
  }
  return bits;
}

/// Turns trace levels on, from `HANDLE=LEVEL,LEVEL...`.
void turnTracesOn(std::vector<std::string> const& settings) {
  std::map<std::string, Kex::U32> handles;
  for (std::string const& setting : settings) {
    std::size_t const equals = setting.find('=');
    std::optional<Kex::U32> const levels =
        equals == std::string::npos ? std::nullopt : levelsOf(setting.substr(equals + 1));
    if (!levels || equals == 0) {
      throw UsageError("--trace: " + setting + " is not HANDLE=LEVELS with levels from 0 to 31");
    }
    handles[setting.substr(0, equals)] |= *levels;
  }
  for (auto const& [handle, levels] : handles) {
    Kex::String8 const name{std::string_view(handle)};
    Kex::TraceHandle::levelsIs(name, levels);
    Kex::TraceHandle::facilityIs(name, true);
  }
}

/// Does `work`; whatever ends it is told of and added to `ledger`.
template <class Work>
void guarded(Ledger& ledger, Work work) {
  try {
    ledger.add(work());
  } catch (UsageError const& error) {
    ledger.tell(Status::usage, error.what());
  } catch (...) {
    ledger.tell(Status::failed, exceptionText(std::current_exception()));
  }
}

}  // namespace

Prepare* preparationOf(std::string_view name) {
  auto const* const row = std::ranges::find(kCommands, name, &Command::name);
  return row == std::end(kCommands) ? nullptr : row->prepare;
}

Status runCommandLine(int argc, char const* const* argv) {
  CLI::App program("Recognises power supplies on SMBus and prints their FDL.", "psu-agent");
  program.set_version_flag("--version", "psu-agent " PSU_VERSION);
  program.require_subcommand(0, 1);
  program.fallthrough();
  Globals globals{.library = Plugin::defaultFile()};
  std::vector<std::string> traces;
  Action action;
  program.add_option("--library", globals.library, "The plug-in's file")->option_text("FILE");
  program.add_option("--trace", traces, "Show trace messages on stderr, e.g. Handle=3,4")
      ->option_text("HANDLE=LEVELS ...")
      ->expected(1)
      ->take_all();
  for (Command const& row : kCommands) {
    CLI::App& command = *program.add_subcommand(row.name, row.purpose);
    if (*row.purpose == '\0') {
      command.group("");
    }
    // What a command takes is made when the command line comes to it: one of them does.
    command.preparse_callback([&action, &command, &row](std::size_t) {
      command.callback([&action, work = row.prepare(command)] { action = work; });
    });
  }
  Ledger ledger;
  guarded(ledger, [&] {
    try {
      program.parse(argc, argv);
    } catch (CLI::Success const& success) {
      program.exit(success, std::cout, std::cerr);
      return Status::ok;
    } catch (CLI::ParseError const& error) {
      throw UsageError(error.what());
    }
    if (!action) {
      throw UsageError("a command is needed: see psu-agent --help");
    }
    turnTracesOn(traces);
    return action(globals);
  });
  errno = 0;
  if (!std::cout.flush()) {
    ledger.tell(Status::failed,
                "standard output: cannot write" + (errno == 0 ? "" : ": " + systemError(errno)));
  }
  return ledger.status();
}

}  // namespace Agent
