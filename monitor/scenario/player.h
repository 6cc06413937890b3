// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Lets a phone and its clients go through what a recording tells, and checks what is expected.
#pragma once

#include <string>

#include "cli/session.h"
#include "clients/client.h"
#include "recording/recorder.h"
#include "scenario/play_plan.h"
#include "scenario/witness.h"

namespace norvik::qel::monitor {

// Threads: the main thread.
class Player {
 public:
  using Clock = Session::Clock;

  enum class End {
    kPlayed,
    kStopped,  // interrupted
    kFailed,   // the first expectation that was not met ends it
  };

  struct Pace {
    double speed = 1;
    bool by_hand = false;  // one act at each Enter
  };

  // `witness` hears of the session's events. `recorder`: null when nothing is written.
  Player(const Recording& recording, const PlayPlan& plan, Pace pace, Session& session,
         PlayedDevice& phone, Witness& witness, Recorder* recorder);
  // Leaves the health service running, as BatteryScript does.
  ~Player();
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;

  End Play();

  // Why it failed, with the line.
  const std::string& failure() const { return failure_; }
  // The library refused a client, where nothing is expected.
  bool refused() const { return refused_; }

 private:
  using Wake = Session::Wake;

  // False when it ends here.
  [[nodiscard]] bool TakeStep(const PlayPlan::Step& step);
  void PrepareFor(const PlayPlan::Step& act);
  // An act each, or what is shown, asked and expected. False: it ends here.
  [[nodiscard]] bool Take(const DeviceEvent& event);
  [[nodiscard]] bool Take(const ClientJoined& joined);
  [[nodiscard]] bool Take(const ClientLeft& left);
  [[nodiscard]] bool Take(const Refusal& refusal);
  [[nodiscard]] bool Take(const Scene& scene);
  [[nodiscard]] bool Take(const Narration& narration);
  [[nodiscard]] bool Take(const Question& question);
  [[nodiscard]] bool Take(const Expectation& expectation);
  [[nodiscard]] bool Take(const ClientCalled& called);
  [[nodiscard]] bool Await(const ClientCalled& called, Seconds within);
  [[nodiscard]] bool Await(const DeviceEvent& event, Seconds within);
  [[nodiscard]] bool Await(const Silence& silence, Seconds within);

  [[nodiscard]] bool WaitUntil(Seconds at);
  [[nodiscard]] bool WaitForEnter();
  // Waits while the time of the recording stands still.
  template <typename Condition>
  Wake WaitFor(Condition condition, Seconds limit);
  bool Fail(const std::string& what);

  const Recording& recording_;
  const PlayPlan& plan_;
  const Pace pace_;
  Session& session_;
  PlayedDevice& phone_;
  Witness& witness_;
  Recorder* const recorder_;
  const bool is_scenario_;
  Client client_;
  Clock::time_point begin_ = Clock::now();  // later by what expectations have waited
  const RecordedEvent* current_ = nullptr;  // what is being played
  int scene_ = 0;
  bool health_died_ = false;
  bool refused_ = false;
  bool input_ended_ = false;
  std::string failure_;
};

// Whether it says what is to be expected.
bool IsScenario(const Recording& recording);

}  // namespace norvik::qel::monitor
