// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/play_plan.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "clients/subjects.h"
#include "scenario/plan_check.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;

const DeviceEvent* DeviceEventOf(const RecordedEvent& event) {
  return std::get_if<DeviceEvent>(&event.what);
}

bool IsKind(const RecordedEvent& event, Kind kind, std::string_view service) {
  const DeviceEvent* const device_event = DeviceEventOf(event);
  return device_event != nullptr && device_event->kind == kind && device_event->service == service;
}

void Equip(const TemperatureReport& report, Equipment& equipment) {
  const bool is_known = std::any_of(
      equipment.temperatures.begin(), equipment.temperatures.end(), [&](const auto& temperature) {
        return temperature.type == report.type && temperature.name == report.name;
      });
  if (is_known) return;
  equipment.temperatures.push_back({.type = report.type,
                                    .name = report.name,
                                    .value = std::nullopt,
                                    .severity = Severity::kNone});
}

// The phone has what the recording speaks of.
Equipment EquipmentOf(const Recording& recording) {
  Equipment equipment;
  for (const RecordedEvent& event : recording.events) {
    const DeviceEvent* const device_event = DeviceEventOf(event);
    // A notice may be of a service that does not run.
    if (device_event == nullptr || device_event->kind == Kind::kNotice) continue;
    equipment.services.insert(device_event->service);
    if (device_event->kind == Kind::kCallbackRegistered) {
      // A sensor may never have reported.
      if (device_event->detail == kProximity.name) equipment.sensors.insert(Sensor::kProximity);
      if (device_event->detail == kHingeAngle.name) equipment.sensors.insert(Sensor::kHingeAngle);
    }
    if (const auto* sensor = std::get_if<SensorReport>(&device_event->report)) {
      equipment.sensors.insert(sensor->sensor);
    }
    if (const auto* heat = std::get_if<TemperatureReport>(&device_event->report)) {
      Equip(*heat, equipment);
    }
  }
  // Reports of temperatures do not say which of the two services made them.
  const bool has_hidl = equipment.services.contains(std::string(kHidlThermalService));
  const bool has_aidl =
      std::any_of(recording.events.begin(), recording.events.end(), [](const RecordedEvent& event) {
        return IsKind(event, Kind::kServiceStarted, kThermalService) ||
               IsKind(event, Kind::kServiceDied, kThermalService);
      });
  if (has_hidl && !has_aidl) equipment.services.erase(std::string(kThermalService));
  return equipment;
}

// What has to wait for the services that run from the beginning.
bool NeedsServices(const RecordedEvent& event) {
  return event.at > Seconds(0) || std::holds_alternative<Expectation>(event.what) ||
         std::holds_alternative<Question>(event.what) ||
         std::holds_alternative<ClientLeft>(event.what) ||
         (DeviceEventOf(event) != nullptr && DeviceEventOf(event)->kind == Kind::kServiceDied);
}

class Planner {
 public:
  explicit Planner(const Recording& recording)
      : recording_(recording), plan_{.equipment = EquipmentOf(recording), .steps = {}} {
    for (const RecordedEvent& event : recording.events) {
      if (const auto* joined = std::get_if<ClientJoined>(&event.what)) {
        joins_.insert(std::string(*FamilyOfSubject(joined->subject)));
      }
    }
  }

  PlayPlan Make();

 private:
  void Add(const RecordedEvent& event, size_t index);
  void AddStart(const RecordedEvent& event, size_t index);
  void Join(Seconds at, std::string_view family);
  // Services that are up at the time 0.
  void StartTheOthers();
  // How often the health service refuses a registration between there and its death.
  int RefusalsAfter(size_t index) const;

  const Recording& recording_;
  PlayPlan plan_;
  std::set<std::string> joins_;         // families whose clients join by themselves
  std::set<std::string> started_;       // services
  std::vector<RecordedEvent> waiting_;  // joins of the battery's clients
};

PlayPlan Planner::Make() {
  const auto& events = recording_.events;
  bool has_begun = false;
  for (size_t i = 0; i < events.size(); ++i) {
    if (NeedsServices(events[i]) && !std::exchange(has_begun, true)) StartTheOthers();
    Add(events[i], i);
  }
  if (!has_begun) StartTheOthers();
  if (!events.empty()) plan_.length = events.back().at;
  return std::move(plan_);
}

void Planner::Add(const RecordedEvent& event, size_t index) {
  if (const auto* joined = std::get_if<ClientJoined>(&event.what)) {
    // Its registration waits for the service, which cannot be started meanwhile.
    const bool waits = FamilyOfSubject(joined->subject) == kBatteryFamily &&
                       plan_.equipment.services.contains(std::string(kHealthService)) &&
                       !started_.contains(std::string(kHealthService));
    if (waits) {
      waiting_.push_back(event);
    } else {
      plan_.steps.push_back({.event = event});
    }
    return;
  }
  const DeviceEvent* const device_event = DeviceEventOf(event);
  if (device_event == nullptr) {
    if (!std::holds_alternative<ClientCalled>(event.what)) plan_.steps.push_back({.event = event});
    return;
  }
  switch (device_event->kind) {
    case Kind::kServiceStarted:
      AddStart(event, index);
      break;
    case Kind::kServiceDied:
    case Kind::kNotice:
    case Kind::kReported:
      plan_.steps.push_back({.event = event});
      break;
    default:
      break;  // a matter of the library's
  }
}

void Planner::AddStart(const RecordedEvent& event, size_t index) {
  const std::string& service = DeviceEventOf(event)->service;
  const int refusals = service == kHealthService ? RefusalsAfter(index) : 0;
  plan_.steps.push_back({.event = event, .refusals = refusals});
  if (!started_.insert(service).second) return;
  const std::string_view family = FamilyOfService(service);
  if (family == kBatteryFamily) {
    for (RecordedEvent& joined : std::exchange(waiting_, {})) {
      joined.at = event.at;
      plan_.steps.push_back({.event = std::move(joined)});
    }
  }
  if (joins_.insert(std::string(family)).second) Join(event.at, family);
}

void Planner::Join(Seconds at, std::string_view family) {
  plan_.steps.push_back(
      {.event = {.at = at, .what = ClientJoined{.subject = std::string(family)}}});
}

void Planner::StartTheOthers() {
  for (const std::string& service : plan_.equipment.services) {
    const auto tells = [&](const RecordedEvent& event) {
      return IsKind(event, Kind::kServiceStarted, service) ||
             IsKind(event, Kind::kServiceDied, service);
    };
    const auto first = std::find_if(recording_.events.begin(), recording_.events.end(), tells);
    const bool starts_later =
        first != recording_.events.end() && DeviceEventOf(*first)->kind == Kind::kServiceStarted;
    if (starts_later) continue;
    AddStart({.at = {}, .what = DeviceEvent{.kind = Kind::kServiceStarted, .service = service}}, 0);
  }
}

int Planner::RefusalsAfter(size_t index) const {
  int refusals = 0;
  for (size_t i = index; i < recording_.events.size(); ++i) {
    const RecordedEvent& event = recording_.events[i];
    if (IsKind(event, Kind::kServiceDied, kHealthService)) break;
    if (!IsKind(event, Kind::kCallRefused, kHealthService)) continue;
    if (DeviceEventOf(event)->detail.starts_with("registerCallback")) ++refusals;
  }
  return refusals;
}

}  // namespace

PlayPlan MakePlayPlan(const Recording& recording) {
  PlayPlan plan = Planner(recording).Make();
  CheckPlan(recording, plan);
  return plan;
}

}  // namespace norvik::qel::monitor
