// explore: drives a real identifier through every state that it can come to.
#include <CLI/CLI.hpp>

#include <iostream>
#include <thread>

#include "tests/explore/Search.h"

int main(int argc, char** argv) {
  CLI::App app(
      "Drives a slot's identifier, base, requests and bus through every state that can be "
      "reached,\n"
      "by every class of answer and every outside act, and checks in each that it is alive, tells\n"
      "nothing false and recovers. Exit status 1 when something is wrong.\n"
      "The supplies have the shortest product info area that holds a serial number, and the "
      "longest\n"
      "repetition is twice the first. States are one where they differ in no more than\n"
      "- which of the verdicts that only a poll comes to is remembered,\n"
      "- the bytes of an area that no supply has,\n"
      "- how many bytes more than one are left to read, between two answers that bring none.");
  bool isSmall = false;
  bool isVerbose = false;
  unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
  app.add_flag("--small", isSmall, "few answers and acts of a kind");
  app.add_flag("--verbose", isVerbose, "a line a round");
  app.add_option("--jobs", jobs, "processes at a time")->check(CLI::Range(1, 64));
  CLI11_PARSE(app, argc, argv);
  try {
    auto const moves = explore::alphabet(isSmall);
    auto const found = explore::search(moves, jobs, [isVerbose](std::string const& line) {
      if (isVerbose) {
        std::cout << line << std::endl;
      }
    });
    std::cout << moves.size() << " kinds of moves, " << found.states << " states, " << found.moves
              << " moves\n";
    for (auto const& fault : found.faults) {
      std::cout << "WRONG: " << fault << '\n';
    }
    return found.faults.empty() ? 0 : 1;
  } catch (std::exception const& error) {
    std::cerr << "explore: " << error.what() << '\n';
    return 1;
  }
}
