// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/playback.h"

#include <errno.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

#include "cli/commands.h"
#include "cli/session.h"
#include "clients/client.h"
#include "clients/subjects.h"
#include "output/printable.h"
#include "recording/recorder.h"
#include "recording/recording_fields.h"
#include "scenario/play_plan.h"
#include "scenario/questions.h"
#include "scenario/witness.h"

namespace norvik::qel::monitor {

namespace {

using Clock = Session::Clock;
using Kind = DeviceEvent::Kind;
using Wake = Session::Wake;

// After the last step, a recording ends when no event has arrived for this time.
constexpr std::chrono::milliseconds kQuiet(1000);
// The limit of a single wait: at a low speed, a longer one could overflow the clock.
constexpr Seconds kLongestWait(3600);

template <typename... Kinds>
bool IsOneOf(const RecordedWhat& what) {
  return (std::holds_alternative<Kinds>(what) || ...);
}

bool IsAct(const RecordedWhat& what) {
  return IsOneOf<DeviceEvent, ClientJoined, ClientLeft, Refusal>(what);
}

Clock::duration ToClock(Seconds seconds) {
  return std::chrono::duration_cast<Clock::duration>(seconds);
}

std::string InWords(Seconds seconds) {
  std::string text = std::to_string(seconds.count());  // six decimals
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text + " s";
}

std::string InWords(std::string_view property, const Value& value) {
  return monitor::InWords(PropertyOf(property), value);
}

std::string InWords(const DeviceEvent& event) {
  const std::string service = "the " + event.service + " service";
  if (event.kind == Kind::kCallRefused) return service + " to refuse " + event.detail;
  const bool comes = event.kind == Kind::kCallbackRegistered;
  return "the library to " + std::string(comes ? "register" : "unregister") + " with " + service +
         (event.detail.empty() ? "" : " for the " + event.detail + " sensor");
}

std::string Counts(const Observed& observed) {
  const int battery = CallbacksOf(kBatteryProperties, observed);
  const int sensors = CallbacksOf(kSensorProperties, observed);
  return Counted(battery, "callback") + " for the battery, " + std::to_string(sensors) +
         " for the sensors and " + std::to_string(observed.callbacks() - battery - sensors) +
         " for the heat, " + Counted(observed.count(Kind::kServiceDied, kHealthService), "death") +
         " of the health service and " + std::to_string(observed.thermal_deaths()) +
         " of the thermal service, " +
         Counted(observed.count(Kind::kCallRefused, kHealthService), "refusal") + " and " +
         Counted(observed.relinks(), "relink");
}

// Plays a recording on a simulated phone with a client, and checks the expectations.
//
// Threads: the main thread.
class Playback {
 public:
  Playback(const Recording& recording, const Options& options, Output& output)
      : recording_(recording),
        speed_(options.speed.value_or(1)),
        by_hand_(options.step),
        is_scenario_(std::any_of(
            recording.events.begin(), recording.events.end(),
            [](const RecordedEvent& event) { return IsOneOf<Expectation, Question>(event.what); })),
        plan_(MakePlayPlan(recording)),
        output_(output),
        session_(options, output,
                 {.listener = [this](const Event& event) { return Note(event); },
                  .make_device =
                      [this](DeviceObserver observer) { return MakePhone(std::move(observer)); }}),
        client_(session_.events()) {
    if (!options.record.empty()) recorder_.emplace(options.record, options.existing, "simulated");
    for (const TemperatureReport& report : plan_.equipment.temperatures) {
      client_.Learn(report);
      output.ExpectName(report.type + ":" + report.name);
    }
  }
  // Restarts a dead health service, as DeviceScript does: the client's teardown would wait for it.
  ~Playback() {
    if (health_died_)
      phone_->Play({.kind = Kind::kServiceStarted, .service = std::string(kHealthService)});
  }
  Playback(const Playback&) = delete;
  Playback& operator=(const Playback&) = delete;

  int Play(const std::string& title, const std::string& introduction) {
    const Clock::time_point start = Clock::now();
    output_.SetDevice("simulated");
    output_.Explain(introduction);
    output_.Explain(kLegend);
    begin_ = Clock::now();
    const bool whole = std::all_of(plan_.steps.begin(), plan_.steps.end(),
                                   [&](const RecordedEvent& step) { return TakeStep(step); }) &&
                       (by_hand_ || WaitUntil(plan_.length));
    // A scenario says what to wait for. After another recording, callbacks may still be pending.
    while (whole && !is_scenario_ && session_.WaitUntil(Clock::now() + kQuiet) == Wake::kEvent) {
      // WaitUntil() has noted the event.
    }
    const bool is_stopped = failure_.empty() && !whole;
    if (is_scenario_) {
      SumUp(title, is_stopped, Clock::now() - start);
    } else if (!failure_.empty()) {
      Complain(failure_);
    }
    const std::string unwritten = recorder_ ? recorder_->failure() : "";
    if (!unwritten.empty()) Complain(unwritten);
    if (is_stopped && unwritten.empty()) return kExitInterrupted;
    if (refused_ && failure_.empty()) Complain(kRefusal);
    return failure_.empty() && !refused_ && unwritten.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
  }

 private:
  // Throws std::runtime_error if the recording refuses a call that the service does not have.
  std::unique_ptr<Device> MakePhone(DeviceObserver observer) {
    auto phone = MakePlayedDevice(plan_.equipment, std::move(observer));
    if (phone == nullptr) throw std::runtime_error("this program has no phone to play on");
    for (const RecordedEvent& event : recording_.events) {
      const auto* const refusal = std::get_if<Refusal>(&event.what);
      if (refusal == nullptr) continue;
      const std::vector<std::string_view> calls = phone->CallsOf(refusal->service);
      if (std::find(calls.begin(), calls.end(), refusal->call) != calls.end()) continue;
      throw std::runtime_error(PlaceOf(recording_, event) + ": the " + refusal->service +
                               " service cannot be told to refuse '" + refusal->call +
                               (calls.empty() ? "'" : "', only one of " + Listed(calls)));
    }
    phone_ = phone.get();
    return phone;
  }

  // False if the recording cannot be written.
  bool Note(const Event& event) {
    witness_.Note(event);
    return !recorder_ || recorder_->Note(event);
  }

  void SumUp(const std::string& title, bool is_stopped, Clock::duration time) {
    const auto seconds = std::chrono::round<std::chrono::seconds>(time);
    const std::string end = !failure_.empty() ? " FAILED: " + failure_
                            : is_stopped      ? " interrupted before its end"
                                              : " OK: all went as told";
    output_.Summary(failure_.empty() && !is_stopped,
                    title + end + "; observed " + Counts(session_.observed()) + " in " +
                        std::to_string(seconds.count()) + " s.",
                    session_.observed());
  }

  // False: playback ends here.
  [[nodiscard]] bool TakeStep(const RecordedEvent& step) {
    current_ = &step;
    const bool needs_enter = by_hand_ && step.line > 0 && IsAct(step.what);
    if (needs_enter) output_.Explain("Enter plays " + Printable(step.text));
    // WaitUntil() processes the pending events even if the step is already due.
    const Seconds due = by_hand_ ? Seconds(0) : step.at;
    if (needs_enter ? !WaitForEnter() : !WaitUntil(due)) return false;
    if (IsAct(step.what)) {
      session_.ShowPending();
      witness_.Act(step.what);
    }
    if (!std::visit([&](const auto& what) { return Take(what); }, step.what)) return false;
    const bool is_misplaced = session_.observed().threads().contains(std::this_thread::get_id());
    return !is_misplaced || Fail("a callback ran on the client's own thread");
  }

  // One overload for each kind of step. False: playback ends here.
  [[nodiscard]] bool Take(const DeviceEvent& event) {
    phone_->Play(event);
    if (event.service == kHealthService) {
      if (event.kind == Kind::kServiceStarted) health_died_ = false;
      if (event.kind == Kind::kServiceDied) health_died_ = true;
    }
    return true;
  }
  [[nodiscard]] bool Take(const ClientJoined& joined) {
    if (recorder_) recorder_->NoteAct(joined);
    if (client_.Join(joined.subject)) return true;
    refused_ = true;
    // A refusal fails a scenario; another recording is played to its end.
    return !is_scenario_ || Fail(std::string(kRefusal) + " for " + joined.subject);
  }
  [[nodiscard]] bool Take(const ClientLeft& left) {
    if (recorder_) recorder_->NoteAct(left);
    if (client_.Leave(left.subject)) return true;
    // If a recording is played fast, a client may leave before the library has made its pending
    // registration, which the library then does not find.
    return !is_scenario_ ||
           Fail("the library refuses to deregister the callback for " + left.subject);
  }
  [[nodiscard]] bool Take(const Refusal& refusal) {
    phone_->Refuse(refusal);
    return true;
  }
  [[nodiscard]] bool Take(const Scene& scene) {
    if (recorder_) recorder_->NoteAct(scene);
    output_.Heading(std::to_string(++scene_) + ". " + scene.title);
    return true;
  }
  [[nodiscard]] bool Take(const Narration& narration) {
    if (recorder_) recorder_->NoteAct(narration);
    output_.Say(narration.text);
    return true;
  }
  [[nodiscard]] bool Take(const Question& question) {
    const Answer answer = Ask(question, client_);
    if (!answer.text.empty()) output_.Say(answer.text);
    return answer.fault.empty() || Fail(answer.fault);
  }
  [[nodiscard]] bool Take(const Expectation& expectation) {
    return std::visit([&](const auto& what) { return Await(what, expectation.within); },
                      expectation.what);
  }
  // Nothing to do: the library calls the clients.
  [[nodiscard]] bool Take(const ClientCalled& /*called*/) { return true; }

  [[nodiscard]] bool Await(const ClientCalled& called, Seconds within) {
    return AwaitTaken(called, within, [&] {
      return "the client of " + called.property + " to be called with " +
             InWords(called.property, called.value) +
             "; it last heard: " + InWords(called.property, witness_.last(called.property));
    });
  }
  [[nodiscard]] bool Await(const DeviceEvent& event, Seconds within) {
    return AwaitTaken(event, within, [&] { return InWords(event); });
  }
  [[nodiscard]] bool Await(const Silence& silence, Seconds within) {
    std::optional<ClientCalled> call;
    const Wake wake = WaitFor(
        [&] { return (call = witness_.UnexpectedCall(silence.subject)).has_value(); }, within);
    if (wake != Wake::kEvent) return wake == Wake::kTime;
    return Fail("the client of " + call->property + " was called with " +
                InWords(call->property, call->value) + ", where no call was expected");
  }
  template <typename What, typename Describe>
  [[nodiscard]] bool AwaitTaken(const What& what, Seconds within, Describe describe) {
    const Wake wake = WaitFor([&] { return witness_.Take(what); }, within);
    if (wake != Wake::kTime) return wake == Wake::kEvent;
    return Fail("waited " + InWords(within) + " in vain for " + describe());
  }

  // False if the session is stopped.
  [[nodiscard]] bool WaitUntil(Seconds at) {
    while (true) {
      const Seconds left = at / speed_ - Seconds(Clock::now() - begin_);
      const Seconds wait = std::clamp(left, Seconds(0), kLongestWait);
      const Wake wake = session_.WaitUntil(Clock::now() + ToClock(wait));
      if (wake == Wake::kStop) return false;
      if (wake == Wake::kTime && left <= kLongestWait) return true;
    }
  }

  // False if the session is stopped, or at the end of the input.
  [[nodiscard]] bool WaitForEnter() {
    while (true) {
      const Wake wake = session_.WaitUntil(Clock::time_point::max(), STDIN_FILENO);
      if (wake == Wake::kStop) return false;
      if (wake != Wake::kInput) continue;
      char key = 0;
      const ssize_t count = read(STDIN_FILENO, &key, 1);
      if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) {
        return Fail("the input ended before this was played");
      }
      if (count > 0 && key == '\n') return true;
    }
  }

  // Waits for `condition` while the recording's time stands still.
  template <typename Condition>
  Wake WaitFor(Condition condition, Seconds limit) {
    const Clock::time_point before = Clock::now();
    const Wake wake = session_.WaitFor(condition, ToClock(limit));
    begin_ += Clock::now() - before;
    return wake;
  }

  bool Fail(const std::string& what) {
    failure_ = PlaceOf(recording_, *current_) + ": " + what;
    return false;
  }

  const Recording& recording_;
  const double speed_;
  const bool by_hand_;      // one act at each Enter
  const bool is_scenario_;  // it has expectations or questions
  const PlayPlan plan_;
  Output& output_;
  Witness witness_;
  std::optional<Recorder> recorder_;
  PlayedDevice* phone_ = nullptr;  // owned by session_
  Session session_;
  Client client_;
  Clock::time_point begin_;                 // moved later by the time that expectations waited
  const RecordedEvent* current_ = nullptr;  // the step being played
  int scene_ = 0;
  bool health_died_ = false;
  bool refused_ = false;  // the library refused a client
  std::string failure_;   // the first failure, with its line; empty: none
};

}  // namespace

int PlayBack(const Recording& recording, const std::string& title, const std::string& introduction,
             const Options& options, Output& output) {
  if (options.existing == ExistingFile::kOverwrite && options.record.empty()) {
    throw UsageError("--force: nothing to overwrite, --record is missing");
  }
  return Playback(recording, options, output).Play(title, introduction);
}

}  // namespace norvik::qel::monitor
