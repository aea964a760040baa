// The search: every state that can be reached, each by a shortest way.
#include "tests/explore/Search.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <unordered_map>

namespace explore {

namespace {

using StateIndex = std::uint32_t;
using MoveIndex = std::uint8_t;

/// A state that was found: how one comes to it.
struct State {
  StateIndex from;
  MoveIndex move;
};

/// What a worker tells of one move: the state that it leads to.
struct Step {
  std::uint64_t digest;
  std::uint64_t seen;
  State state;
};

/// What is known of states, by their digests.
class Known {
 public:
  /// Whether nothing is known of such a state that says as much: all that may be told in one where
  /// less was seen, may be told in this one too.
  bool insert(std::uint64_t digest, std::uint64_t seen) {
    static_assert(kSupplies <= 3);
    Kex::U8& known = sets_[digest];
    for (std::uint64_t set = 0; set <= seen; ++set) {
      if ((unsigned{known} >> set & 1U) != 0 && (set & seen) == set) {
        return false;
      }
    }
    known = static_cast<Kex::U8>(known | 1U << seen);
    return true;
  }

 private:
  /// Of each digest the sets of supplies seen, a bit each.
  std::unordered_map<std::uint64_t, Kex::U8> sets_;
};

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Everything that a worker has to say, in the order in which the round goes through it.
struct Report {
  std::vector<Step> steps;
  std::size_t moves = 0;
  std::string fault;
};

class Search {
 public:
  Search(std::vector<Move> const& moves, unsigned jobs) : moves_(moves), jobs_(jobs) {}

  Found run(std::function<void(std::string const&)> const& tell) {
    Found found;
    warmUp();
    known_.insert(Rig().digest(), 0);
    states_.push_back({0, 0});
    for (std::size_t begin = 0, round = 0; begin < states_.size() && found.faults.empty();
         ++round) {
      std::size_t const end = states_.size();
      for (Report const& report : expand(begin, end)) {
        found.moves += report.moves;
        if (!report.fault.empty()) {
          found.faults.push_back(report.fault);
        }
        for (Step const& step : report.steps) {
          if (known_.insert(step.digest, step.seen)) {
            states_.push_back(step.state);
          }
        }
      }
      tell("round " + std::to_string(round) + ": " + std::to_string(states_.size()) + " states, " +
           std::to_string(found.moves) + " moves");
      begin = end;
    }
    found.states = states_.size();
    return found;
  }

 private:
  /// Lets everything be made that is made once a process; from then on no object may be left over.
  void warmUp() {
    for (Move const& move : moves_) {
      Rig rig;
      tryOut(move, rig);
      rig.recover(kA);
      tryOut(move, rig);
    }
  }

  static void tryOut(Move const& move, Rig& rig) {
    for (int times = 0; times < 3; ++times) {
      if (move.isPossible(rig)) {
        move.happen(rig);
      }
      if (rig.isOnWire()) {
        rig.answer(kA);
      }
    }
  }

  /// The states from `begin` to `end`, each with all that may happen in it; a share of them in each
  /// of the workers, which know what is known now.
  std::vector<Report> expand(std::size_t begin, std::size_t end) {
    std::vector<File> pipes;
    for (unsigned worker = 0; worker < jobs_; ++worker) {
      int ends[2];
      if (pipe(ends) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
      }
      std::fflush(nullptr);
      pid_t const child = fork();
      if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
      }
      if (child == 0) {
        close(ends[0]);
        File const out(fdopen(ends[1], "w"), &std::fclose);
        write(*out, work(begin + worker, end));
        std::fflush(out.get());
        _exit(0);
      }
      close(ends[1]);
      pipes.emplace_back(fdopen(ends[0], "r"), &std::fclose);
    }
    std::vector<Report> reports;
    for (File const& pipe : pipes) {
      reports.push_back(read(*pipe));
    }
    while (wait(nullptr) > 0) {
    }
    return reports;
  }

  Report work(std::size_t begin, std::size_t end) {
    Report report;
    std::vector<MoveIndex> way;
    try {
      for (std::size_t state = begin; state < end; state += jobs_) {
        way = wayTo(state);
        expandOne(static_cast<StateIndex>(state), way, report);
      }
    } catch (std::exception const& error) {
      report.fault = error.what();
      for (MoveIndex const move : way) {
        report.fault += "\n  " + moves_[move].what;
      }
    }
    return report;
  }

  void expandOne(StateIndex state, std::vector<MoveIndex>& way, Report& report) {
    for (std::optional<Supply> const supply :
         {std::optional(kA), std::optional(kB), std::optional(kBWithoutSerial), {}}) {
      walk(way, [&](Rig& rig) { rig.recover(supply); });
    }
    std::vector<MoveIndex> possible;
    walk(way, [&](Rig& rig) {
      for (std::size_t move = 0; move < moves_.size(); ++move) {
        if (moves_[move].isPossible(rig)) {
          possible.push_back(static_cast<MoveIndex>(move));
        }
      }
    });
    for (MoveIndex const move : possible) {
      way.push_back(move);
      walk(way, [&](Rig& rig) {
        Step const step{rig.digest(), rig.seen(), {state, move}};
        if (known_.insert(step.digest, step.seen)) {
          report.steps.push_back(step);
        }
      });
      way.pop_back();
      ++report.moves;
    }
  }

  /// Goes the way from the beginning and does `then` at its end.
  template <class Then>
  void walk(std::vector<MoveIndex> const& way, Then then) {
    std::size_t const objects = Kex::VFPtrInterface::liveObjects();
    {
      Rig rig;
      for (MoveIndex const move : way) {
        moves_[move].happen(rig);
      }
      then(rig);
    }
    if (Kex::VFPtrInterface::liveObjects() != objects) {
      throw std::runtime_error("an object is left over");
    }
  }

  std::vector<MoveIndex> wayTo(std::size_t state) const {
    std::vector<MoveIndex> way;
    for (; state != 0; state = states_[state].from) {
      way.insert(way.begin(), states_[state].move);
    }
    return way;
  }

  static void write(std::FILE& out, Report const& report) {
    std::size_t const sizes[] = {report.steps.size(), report.moves, report.fault.size()};
    std::fwrite(sizes, sizeof sizes, 1, &out);
    if (!report.steps.empty()) {
      std::fwrite(report.steps.data(), sizeof(Step), report.steps.size(), &out);
    }
    std::fwrite(report.fault.data(), 1, report.fault.size(), &out);
  }

  static Report read(std::FILE& in) {
    std::size_t sizes[3];
    Report report;
    bool isWhole = std::fread(sizes, sizeof sizes, 1, &in) == 1;
    if (isWhole) {
      report.steps.resize(sizes[0]);
      report.moves = sizes[1];
      report.fault.resize(sizes[2]);
      isWhole = (sizes[0] == 0 ||
                 std::fread(report.steps.data(), sizeof(Step), sizes[0], &in) == sizes[0]) &&
                std::fread(report.fault.data(), 1, sizes[2], &in) == sizes[2];
    }
    if (!isWhole) {
      report.fault = "a worker ended early: what it said stands above";
    }
    return report;
  }

  std::vector<Move> const& moves_;
  unsigned jobs_;
  std::vector<State> states_;
  Known known_;
};

}  // namespace

Found search(std::vector<Move> const& moves, unsigned jobs,
             std::function<void(std::string const&)> const& tell) {
  return Search(moves, jobs).run(tell);
}

}  // namespace explore
