// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/playback.h"

#include <stdlib.h>

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

#include "cli/commands.h"
#include "cli/session.h"
#include "clients/subjects.h"
#include "recording/recorder.h"
#include "scenario/play_plan.h"
#include "scenario/player.h"

namespace norvik::qel::monitor {

namespace {

std::string Counts(const Observed& observed) {
  using Kind = DeviceEvent::Kind;
  const int battery = CallbacksOf(kBatteryProperties, observed);
  const int sensors = CallbacksOf(kSensorProperties, observed);
  return Counted(battery, "callback") + " for the battery, " + std::to_string(sensors) +
         " for the sensors and " + std::to_string(observed.callbacks() - battery - sensors) +
         " for the heat, " + Counted(observed.count(Kind::kServiceDied, kHealthService), "death") +
         " of the health service and " +
         std::to_string(observed.count(Kind::kServiceDied, kThermalService) +
                        observed.count(Kind::kServiceDied, kHidlThermalService)) +
         " of the thermal service, " +
         Counted(observed.count(Kind::kCallRefused, kHealthService), "refusal") + " and " +
         Counted(observed.relinks(), "relink");
}

void SumUp(const std::string& title, const Player& player, Player::End end,
           std::chrono::steady_clock::duration time, Session& session) {
  const Observed& observed = session.observed();
  const auto seconds = std::chrono::round<std::chrono::seconds>(time);
  const std::string counts =
      "observed " + Counts(observed) + " in " + std::to_string(seconds.count()) + " s.";
  Output& output = session.output();
  switch (end) {
    case Player::End::kPlayed:
      output.Summary(true, title + " OK: all went as told; " + counts, observed);
      break;
    case Player::End::kStopped:
      output.Summary(false, title + " interrupted before its end; " + counts, observed);
      break;
    case Player::End::kFailed:
      output.Summary(false, title + " FAILED: " + player.failure() + "; " + counts, observed);
      break;
  }
}

// The phone knows its services' calls.
void CheckRefusals(const Recording& recording, PlayedDevice& phone) {
  for (const RecordedEvent& event : recording.events) {
    const auto* const refusal = std::get_if<Refusal>(&event.what);
    if (refusal == nullptr || phone.CanRefuse(*refusal)) continue;
    throw std::runtime_error(PlaceOf(recording, event) + ": the " + refusal->service +
                             " service has no call '" + refusal->call +
                             "' that it could be told to refuse");
  }
}

}  // namespace

int PlayBack(const Recording& recording, const Announcement& announcement, const Options& options,
             Output& output) {
  if (options.existing == ExistingFile::kOverwrite && options.record.empty()) {
    throw UsageError("--force: nothing to overwrite, --record is missing");
  }
  const PlayPlan plan = MakePlayPlan(recording);
  Witness witness;
  std::optional<Recorder> recorder;
  PlayedDevice* phone = nullptr;
  const auto make_device = [&](DeviceObserver observer) -> std::unique_ptr<Device> {
    auto made = MakePlayedDevice(plan.equipment, std::move(observer));
    if (made == nullptr) throw std::runtime_error("this program has no phone to play on");
    CheckRefusals(recording, *made);
    phone = made.get();
    return made;
  };
  const auto note = [&](const Event& event) {
    witness.Note(event);
    return !recorder || recorder->Note(event);
  };
  Session session(options, output, {.listener = note, .make_device = make_device});
  if (!options.record.empty()) recorder.emplace(options.record, options.existing, "simulated");
  const auto begin = Session::Clock::now();
  output.SetDevice("simulated");
  output.Explain(announcement.introduction);
  output.Explain(kLegend);
  Player player(recording, plan, {.speed = options.speed.value_or(1), .by_hand = options.step},
                session, *phone, witness, recorder ? &*recorder : nullptr);
  const Player::End end = player.Play();
  if (IsScenario(recording)) {
    SumUp(announcement.title, player, end, Session::Clock::now() - begin, session);
  }
  if (end == Player::End::kStopped) return kExitInterrupted;
  bool success = end != Player::End::kFailed;
  if (player.refused() && end != Player::End::kFailed) {
    Complain(kRefusal);
    success = false;
  }
  if (recorder && !recorder->failure().empty()) {
    Complain(recorder->failure());
    success = false;
  }
  return success ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace norvik::qel::monitor
