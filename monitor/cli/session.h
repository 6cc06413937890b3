// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a command that waits works with.
#pragma once

#include <signal.h>
#include <stdlib.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "cli/command_table.h"
#include "clients/device.h"
#include "clients/event_queue.h"
#include "output/output.h"

namespace norvik::qel::monitor {

// How long to wait for the first report; only a device without a working service needs it.
inline constexpr std::chrono::seconds kReportLimit(5);

// What is wrong when that was not long enough.
std::string SilenceOf(std::string_view service);

// SIGINT and SIGTERM as something to wait for. Made before the program's other threads, which
// inherit that the signals are blocked.
//
// Threads: the main thread.
class StopSignals {
 public:
  StopSignals();
  // The signals are what they were.
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // Readable once a signal has come.
  int fd() const { return fd_; }
  // Takes the signal. From here on a second one ends the program at once.
  void Accept();

 private:
  int fd_;
  sigset_t before_;
};

// Takes the events while the command waits for them. Clients of the library are made after the
// session and destroyed before it.
//
// Threads: the main thread.
class Session {
 public:
  using Clock = std::chrono::steady_clock;

  struct Setup {
    bool show_events = true;   // those of the command's service, or all
    bool show_notices = true;  // beside values; where events are shown, notices are too
    // Called with every event, shown or not. False stops the session.
    std::function<bool(const Event&)> listener = nullptr;
    // Instead of the device in the options.
    std::function<std::unique_ptr<Device>(DeviceObserver)> make_device = nullptr;
  };

  Session(const Options& options, Output& output, const Setup& setup);

  enum class Wake {
    kEvent,  // one was noted
    kTime,   // none came until then
    kInput,  // there is something to read
    kStop,   // a signal came, or the reader of the output has left
  };
  static constexpr int kNoInput = -1;
  // `input`: a descriptor that may have something to read.
  Wake WaitUntil(Clock::time_point until, int input = kNoInput);

  // Waits until what has been observed fulfils `condition`.
  template <typename Condition>
  Wake WaitFor(Condition condition, Clock::duration limit) {
    const Clock::time_point until = Clock::now() + limit;
    while (!condition()) {
      if (const Wake wake = WaitUntil(until); wake != Wake::kEvent) return wake;
    }
    return Wake::kEvent;
  }

  // Shows what has happened so far.
  void ShowPending();
  // The same, then the text on standard error. Returns EXIT_FAILURE.
  int Fail(const std::string& text, int exit_code = EXIT_FAILURE);

  Output& output() { return output_; }
  Device& device() { return *device_; }
  const std::shared_ptr<EventQueue>& events() { return events_; }
  const Observed& observed() const { return observed_; }

 private:
  // kTime also when an event waits.
  Wake Wait(Clock::time_point until, int input);
  void ShowEvent(const Event& event);

  Output& output_;
  const bool show_events_;
  const bool show_notices_;
  const std::string_view service_;  // empty: all
  const std::function<bool(const Event&)> listener_;
  StopSignals signals_;  // before the device, whose threads inherit the mask
  const std::shared_ptr<EventQueue> events_ = std::make_shared<EventQueue>();
  const std::unique_ptr<Device> device_;
  Observed observed_;
  bool stopped_ = false;
};

}  // namespace norvik::qel::monitor
