// What ends the program, or one of its sources, before its work is done.
#include "agent/base/Error.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string_view>
#include <system_error>

#include "agent/base/Terminal.h"
#include "agent/base/Text.h"
#include "host/kex/base/Exception.h"

namespace Agent {

namespace {

/// What matters less is told to nobody.
Priority leastTold = Priority::info;

/// What a framework exception says whose text is only the name of what was wrong.
struct Meaning {
  Kex::U32 id;
  std::string before;
  std::string after;
};

Meaning const kMeanings[] = {
    {Kex::Exception::kType, "", " is missing, or has another type"},
    {Kex::Exception::kConst, "", " cannot be changed"},
    {Kex::Exception::kOpNotSupported, "", " does not support this operation"},
    {Kex::Exception::kUnknownArg, "there is an argument more than is declared: ", ""},
    {Kex::Exception::kBadIndexAttr, "", " takes no index"},
};

/// Longer words, such as arguments of the command line, are cut in messages. What a supply's field
/// can hold is not.
constexpr std::size_t kLongestWord = 260;

std::string withShortWords(std::string_view text) {
  constexpr std::size_t kKept = 60;
  std::string shorter;
  while (!text.empty()) {
    std::string_view const word = text.substr(0, text.find(' ', 1));
    text.remove_prefix(word.size());
    if (word.size() <= kLongestWord) {
      shorter += word;
    } else {
      shorter.append(word.substr(0, kKept)).append("...").append(word.substr(word.size() - kKept));
    }
  }
  return shorter;
}

}  // namespace

std::string systemError(int number) { return std::generic_category().message(number); }

std::string exceptionText(std::exception_ptr const& thrown) {
  if (!thrown) {
    return "no exception";
  }
  try {
    std::rethrow_exception(thrown);
  } catch (Kex::Exception const& refused) {
    auto const* const meaning = std::ranges::find(kMeanings, refused.id(), &Meaning::id);
    return meaning == std::end(kMeanings) ? refused.what()
                                          : meaning->before + (refused.what() + meaning->after);
  } catch (std::exception const& error) {
    return error.what();
  } catch (...) {
    return "an exception that has no text";
  }
}

void complain(std::string const& text, Priority priority) {
  if (priority > leastTold) {
    return;
  }
  eraseProgress();
  std::cerr << priorityPrefix(STDERR_FILENO, priority)
            << "psu-agent: " << withShortWords(escaped(text)) << '\n';
}

void tellErrorsOnly() {
  leastTold = Priority::error;
  noProgress();
}

}  // namespace Agent
