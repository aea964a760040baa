// The loop that turns the framework: on a virtual clock, or on the steady one.
#pragma once

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <chrono>
#include <functional>
#include <limits>
#include <memory>

#include "agent/base/ExitStatus.h"
#include "agent/transport/Post.h"

namespace Agent {

/// Which clock a loop steps.
enum class ClockKind : unsigned char {
  virtualClock,  ///< goes from deadline to deadline as fast as the machine can
  steadyClock,   ///< follows the machine's steady clock
};

/// Steps the framework's clock, which starts at 0 s, and runs what becomes due, what other threads
/// post, and SIGINT and SIGTERM, which stop it. One loop at a time, on the thread that made it.
class Loop {
 public:
  static constexpr double kForever = std::numeric_limits<double>::infinity();

  explicit Loop(ClockKind kind);
  Loop(Loop const&) = delete;
  Loop& operator=(Loop const&) = delete;
  ~Loop();

  /// Runs until `isDone` holds, the clock has reached `until` (seconds), or a signal stopped the
  /// loop. On a virtual clock it also ends when nothing is left to wait for. Stopped loops return
  /// at once.
  void run(double until, std::function<bool()> const& isDone);
  /// What SIGHUP does from now on; without it, what it does to any program.
  void onHangUpIs(std::function<void()> onHangUp);
  /// Ends the run as SIGTERM does.
  void stop();
  /// Whether SIGINT or SIGTERM came.
  bool isStopped() const { return signal_ != 0; }
  /// The status of a run that had to come to its end: `interrupted` or `terminated` when a signal
  /// stopped it, else `ok`.
  Status status() const;
  ClockKind kind() const { return kind_; }
  /// The clock's time in seconds.
  double now() const;

  /// Hands work to the loop's thread. What is posted when the loop has gone is dropped.
  Post post() const;

 private:
  void awaitHangUp();
  /// Waits for posted work until `time` (seconds), and steps the clock.
  void waitUntil(double time);

  ClockKind kind_;
  // Shared with posters: a worker that the kernel keeps may outlive the loop.
  std::shared_ptr<asio::io_context> context_;
  asio::executor_work_guard<asio::io_context::executor_type> guard_;
  asio::signal_set signals_;
  asio::signal_set hangUp_;
  std::function<void()> onHangUp_;
  std::chrono::steady_clock::time_point start_;
  /// What stopped the loop; 0 before.
  int signal_ = 0;
};

}  // namespace Agent
