// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The session of a command that waits for events: the device, its events, signals and output.
#pragma once

#include <signal.h>
#include <stdlib.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>

#include "cli/command_table.h"
#include "clients/device.h"
#include "clients/event_queue.h"
#include "output/output.h"

namespace norvik::qel::monitor {

// The time limit for the first report. Reached only if a service does not work.
inline constexpr std::chrono::seconds kReportLimit(5);

// Receives SIGINT and SIGTERM through a descriptor. Made before the program's other threads, which
// inherit the blocked signals.
//
// Threads: the main thread.
class StopSignals {
 public:
  StopSignals();
  // Restores the signal mask.
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // Readable once a signal has come.
  int fd() const { return fd_; }
  // Consumes the signal and restores the mask: a second signal ends the program at once.
  void Accept();

 private:
  int fd_;
  sigset_t before_;
};

// Owns the device and processes its events while the command waits. Clients of the library are made
// after the session and destroyed before it.
//
// Threads: the main thread.
class Session {
 public:
  using Clock = std::chrono::steady_clock;

  struct Setup {
    bool show_events = true;
    // Of the services of these families only; empty: of all.
    std::set<std::string_view> families = {};
    bool show_notices = true;  // if events, which include notices, are not shown
    // False: a signal ends the program at once, even while a service does not answer.
    bool waits = true;
    // Called with every event, shown or not. False stops the session.
    std::function<bool(const Event&)> listener = nullptr;
    // Replaces the device of the options.
    std::function<std::unique_ptr<Device>(DeviceObserver)> make_device = nullptr;
  };

  Session(const Options& options, Output& output, const Setup& setup);

  enum class Wake {
    kEvent,  // an event was processed
    kTime,   // no event before the deadline
    kInput,  // the input is readable
    kStop,   // a signal, a closed output, or a false from the listener
  };
  static constexpr int kNoInput = -1;
  // Processes at most one event. `input`: a descriptor that also ends the wait when readable.
  Wake WaitUntil(Clock::time_point until, int input = kNoInput);

  // Processes events until `condition` holds.
  template <typename Condition>
  Wake WaitFor(Condition condition, Clock::duration limit) {
    const Clock::time_point until = Clock::now() + limit;
    while (!condition()) {
      if (const Wake wake = WaitUntil(until); wake != Wake::kEvent) return wake;
    }
    return Wake::kEvent;
  }

  // Processes all pending events.
  void ShowPending();
  // The same, then prints the text on standard error. Returns `exit_code`.
  int Fail(const std::string& text, int exit_code = EXIT_FAILURE);

  Output& output() { return output_; }
  Device& device() { return *device_; }
  const std::shared_ptr<EventQueue>& events() { return events_; }
  const Observed& observed() const { return observed_; }
  // Whether every further wait returns kStop.
  bool stopped() const { return stopped_ || !output_.lines().open(); }

 private:
  // Returns kTime also if an event is pending.
  Wake Wait(Clock::time_point until, int input);
  void ShowEvent(const Event& event);

  Output& output_;
  const bool show_events_;
  const bool show_notices_;
  const std::set<std::string_view> families_;
  const std::function<bool(const Event&)> listener_;
  const std::unique_ptr<StopSignals> signals_;  // before the device, whose threads inherit the mask
  const std::shared_ptr<EventQueue> events_ = std::make_shared<EventQueue>();
  const std::unique_ptr<Device> device_;
  Observed observed_;
  bool stopped_ = false;
};

}  // namespace norvik::qel::monitor
