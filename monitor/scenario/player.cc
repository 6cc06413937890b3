// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/player.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "cli/commands.h"
#include "clients/subjects.h"
#include "output/printable.h"
#include "scenario/questions.h"

namespace norvik::qel::monitor {

namespace {

// How long nothing is heard once all has been heard.
constexpr std::chrono::milliseconds kQuiet(1000);
// One wait is no longer, so that no speed brings a clock to its end.
constexpr Seconds kLongestWait(3600);

bool IsAct(const RecordedWhat& what) {
  return std::holds_alternative<DeviceEvent>(what) || std::holds_alternative<ClientJoined>(what) ||
         std::holds_alternative<ClientLeft>(what) || std::holds_alternative<Refusal>(what);
}

Session::Clock::duration ToClock(Seconds seconds) {
  return std::chrono::duration_cast<Session::Clock::duration>(seconds);
}

std::string InWords(Seconds seconds) {
  std::string text = std::to_string(seconds.count());  // six digits
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text + " s";
}

std::string InWords(const ClientCalled& called) {
  return called.property + " to be called with " +
         monitor::InWords(PropertyOf(called.property), called.value);
}

std::string InWords(const DeviceEvent& event) {
  const std::string service = "the " + event.service + " service";
  if (event.kind == DeviceEvent::Kind::kCallRefused) return service + " to refuse " + event.detail;
  const bool comes = event.kind == DeviceEvent::Kind::kCallbackRegistered;
  return "the library to " + std::string(comes ? "register" : "unregister") + " with " + service +
         (event.detail.empty() ? "" : " for the " + event.detail + " sensor");
}

}  // namespace

bool IsScenario(const Recording& recording) {
  return std::any_of(recording.events.begin(), recording.events.end(),
                     [](const RecordedEvent& event) {
                       return std::holds_alternative<Expectation>(event.what) ||
                              std::holds_alternative<Question>(event.what);
                     });
}

Player::Player(const Recording& recording, const PlayPlan& plan, Pace pace, Session& session,
               PlayedDevice& phone, Witness& witness, Recorder* recorder)
    : recording_(recording),
      plan_(plan),
      pace_(pace),
      session_(session),
      phone_(phone),
      witness_(witness),
      recorder_(recorder),
      is_scenario_(IsScenario(recording)),
      client_(session.events()) {
  for (const TemperatureReport& report : plan_.equipment.temperatures) client_.Learn(report);
}

Player::~Player() {
  if (!health_died_) return;
  phone_.Play({.kind = DeviceEvent::Kind::kServiceStarted, .service = std::string(kHealthService)});
}

Player::End Player::Play() {
  const bool whole = std::all_of(plan_.steps.begin(), plan_.steps.end(),
                                 [&](const PlayPlan::Step& step) { return TakeStep(step); }) &&
                     (pace_.by_hand || WaitUntil(plan_.length));
  // A scenario says what to wait for; otherwise there may be more to come.
  while (whole && !is_scenario_ && session_.WaitUntil(Clock::now() + kQuiet) == Wake::kEvent) {
    // It is heard.
  }
  if (!failure_.empty()) return End::kFailed;
  return whole || input_ended_ ? End::kPlayed : End::kStopped;
}

bool Player::TakeStep(const PlayPlan::Step& step) {
  current_ = &step.event;
  const bool needs_enter = pace_.by_hand && step.event.line > 0 && IsAct(step.event.what);
  if (needs_enter) session_.output().Explain("Enter plays " + Printable(step.event.text));
  // What has happened so far is noted before the next thing happens.
  const Seconds due = pace_.by_hand ? Seconds(0) : step.event.at;
  if (needs_enter ? !WaitForEnter() : !WaitUntil(due)) return false;
  if (IsAct(step.event.what)) PrepareFor(step);
  if (!std::visit([&](const auto& what) { return Take(what); }, step.event.what)) return false;
  const bool is_misplaced = session_.observed().threads().contains(std::this_thread::get_id());
  return !is_misplaced || Fail("a callback ran on the client's own thread");
}

void Player::PrepareFor(const PlayPlan::Step& act) {
  while (session_.WaitUntil(Clock::now()) == Wake::kEvent) {
    // The witness notes it before the act.
  }
  witness_.Act(act.event.what);
  if (act.refusals == 0) return;
  phone_.Refuse(
      {.service = std::string(kHealthService), .call = "registerCallback", .times = act.refusals});
}

bool Player::Take(const DeviceEvent& event) {
  phone_.Play(event);
  if (event.service == kHealthService) {
    if (event.kind == DeviceEvent::Kind::kServiceStarted) health_died_ = false;
    if (event.kind == DeviceEvent::Kind::kServiceDied) health_died_ = true;
  }
  return true;
}

bool Player::Take(const ClientJoined& joined) {
  if (recorder_ != nullptr) recorder_->NoteAct(joined);
  if (client_.Join(joined.subject)) return true;
  refused_ = true;
  // Of a recording all the rest is worth playing.
  return !is_scenario_ || Fail(std::string(kRefusal) + " for " + joined.subject);
}

bool Player::Take(const ClientLeft& left) {
  if (recorder_ != nullptr) recorder_->NoteAct(left);
  if (client_.Leave(left.subject)) return true;
  // A recording that is played fast may let clients leave who still wait for their service: the
  // library does not know them yet.
  return !is_scenario_ ||
         Fail("the library refuses to deregister the callback for " + left.subject);
}

bool Player::Take(const Refusal& refusal) {
  phone_.Refuse(refusal);
  return true;
}

bool Player::Take(const Scene& scene) {
  if (recorder_ != nullptr) recorder_->NoteAct(scene);
  session_.output().Heading(std::to_string(++scene_) + ". " + scene.title);
  return true;
}

bool Player::Take(const Narration& narration) {
  if (recorder_ != nullptr) recorder_->NoteAct(narration);
  session_.output().Say(narration.text);
  return true;
}

bool Player::Take(const Question& question) {
  const Answer answer = Ask(question, client_);
  if (!answer.text.empty()) session_.output().Say(answer.text);
  return answer.fault.empty() || Fail(answer.fault);
}

bool Player::Take(const Expectation& expectation) {
  return std::visit([&](const auto& what) { return Await(what, expectation.within); },
                    expectation.what);
}

// The library does it.
bool Player::Take(const ClientCalled& /*called*/) {
  return true;
}

bool Player::Await(const ClientCalled& called, Seconds within) {
  const Wake wake = WaitFor([&] { return witness_.Take(called); }, within);
  if (wake == Wake::kEvent) return true;
  if (wake == Wake::kStop) return false;
  return Fail("waited " + InWords(within) + " in vain for the client of " + InWords(called) +
              "; it last heard: " +
              monitor::InWords(PropertyOf(called.property), witness_.last(called.property)));
}

bool Player::Await(const DeviceEvent& event, Seconds within) {
  const Wake wake = WaitFor([&] { return witness_.Take(event); }, within);
  if (wake == Wake::kEvent) return true;
  if (wake == Wake::kStop) return false;
  return Fail("waited " + InWords(within) + " in vain for " + InWords(event));
}

bool Player::Await(const Silence& silence, Seconds /*within*/) {
  std::optional<ClientCalled> call;
  const Wake wake =
      WaitFor([&] { return (call = witness_.UnexpectedCall(silence.subject)).has_value(); },
              silence.duration);
  if (wake == Wake::kTime) return true;
  if (wake == Wake::kStop) return false;
  return Fail("the client of " + call->property + " was called with " +
              monitor::InWords(PropertyOf(call->property), call->value) +
              ", where no call was expected");
}

// False when it is interrupted.
bool Player::WaitUntil(Seconds at) {
  while (true) {
    const Seconds left = at / pace_.speed - Seconds(Clock::now() - begin_);
    const Seconds wait = std::clamp(left, Seconds(0), kLongestWait);
    const Wake wake = session_.WaitUntil(Clock::now() + ToClock(wait));
    if (wake == Wake::kStop) return false;
    if (wake == Wake::kTime && left <= kLongestWait) return true;
  }
}

// False also at the end of the input.
bool Player::WaitForEnter() {
  while (true) {
    const Wake wake = session_.WaitUntil(Clock::time_point::max(), STDIN_FILENO);
    if (wake == Wake::kStop) return false;
    if (wake != Wake::kInput) continue;
    char key = 0;
    const ssize_t count = read(STDIN_FILENO, &key, 1);
    if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) {
      input_ended_ = true;
      // What it expects from here on has not come.
      return is_scenario_ && Fail("the input ended before this was played");
    }
    if (count > 0 && key == '\n') return true;
  }
}

template <typename Condition>
Session::Wake Player::WaitFor(Condition condition, Seconds limit) {
  const Clock::time_point before = Clock::now();
  const Wake wake = session_.WaitFor(condition, ToClock(limit));
  begin_ += Clock::now() - before;
  return wake;
}

bool Player::Fail(const std::string& what) {
  failure_ = PlaceOf(recording_, *current_) + ": " + what;
  return false;
}

}  // namespace norvik::qel::monitor
