// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a command that waits works with.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "cli/command_table.h"
#include "cli/stop_signals.h"
#include "clients/device.h"
#include "clients/event_queue.h"
#include "output/output.h"

namespace norvik::qel::monitor {

// How long to wait for the first report; only a device without a working service needs it.
inline constexpr std::chrono::seconds kReportLimit(5);

// What is wrong when that was not long enough.
std::string SilenceOf(std::string_view service);

// Takes the events while somebody waits for them. Clients of the library are made after the session
// and go before it.
//
// Threads: the main thread.
class Session {
 public:
  using Clock = std::chrono::steady_clock;

  struct Setup {
    bool show_events = true;  // those of the command's service, or all
    // Hears of every event, shown or not. False: there is no use in going on.
    std::function<bool(const Event&)> listener = nullptr;
    // Instead of the device in the options.
    std::function<std::unique_ptr<Device>(DeviceObserver)> make_device = nullptr;
  };

  Session(const Options& options, Output& output, const Setup& setup);

  enum class Wake {
    kEvent,  // one was noted
    kTime,   // none came until then
    kInput,  // there is something to read
    kStop,   // somebody wants the program to end, or nobody reads its output any more
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

  Output& output() { return output_; }
  Device& device() { return *device_; }
  const std::shared_ptr<EventQueue>& events() { return events_; }
  const Observed& observed() const { return observed_; }

 private:
  // kTime also when an event waits.
  Wake Wait(Clock::time_point until, int input);
  bool IsShown(const Event& event) const;

  Output& output_;
  const bool show_events_;
  const std::string_view service_;  // empty: all
  const std::function<bool(const Event&)> listener_;
  StopSignals signals_;  // before the device, whose threads inherit the mask
  const std::shared_ptr<EventQueue> events_ = std::make_shared<EventQueue>();
  const std::unique_ptr<Device> device_;
  Observed observed_;
  bool stopped_ = false;
};

}  // namespace norvik::qel::monitor
