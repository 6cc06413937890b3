// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/play_plan.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;

bool IsKind(const RecordedEvent& event, Kind kind, std::string_view service) {
  const auto* const device_event = std::get_if<DeviceEvent>(&event.what);
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

// The services, sensors and temperatures that occur in the recording.
Equipment EquipmentOf(const Recording& recording) {
  Equipment equipment;
  bool has_aidl = false;
  for (const RecordedEvent& event : recording.events) {
    const auto* const device_event = std::get_if<DeviceEvent>(&event.what);
    // A notice may be about a service that does not exist.
    if (device_event == nullptr || device_event->kind == Kind::kNotice) continue;
    equipment.services.insert(device_event->service);
    has_aidl |= IsKind(event, Kind::kServiceStarted, kThermalService) ||
                IsKind(event, Kind::kServiceDied, kThermalService);
    for (const Sensor sensor : kSensors) {
      // A sensor may be registered and never report.
      const bool is_registered = device_event->kind == Kind::kCallbackRegistered &&
                                 device_event->detail == PropertyOf(sensor).name;
      if (is_registered) equipment.sensors.insert(sensor);
    }
    if (const auto* sensor = std::get_if<SensorReport>(&device_event->report)) {
      equipment.sensors.insert(sensor->sensor);
    }
    if (const auto* heat = std::get_if<TemperatureReport>(&device_event->report)) {
      Equip(*heat, equipment);
    }
  }
  // Reports of temperatures do not distinguish the two thermal services.
  const bool has_hidl = equipment.services.contains(std::string(kHidlThermalService));
  if (has_hidl && !has_aidl) equipment.services.erase(std::string(kThermalService));
  return equipment;
}

// Whether the services that run from the beginning must be up before this event.
bool NeedsServices(const RecordedEvent& event) {
  const auto* const device_event = std::get_if<DeviceEvent>(&event.what);
  return event.at > Seconds(0) || std::holds_alternative<Expectation>(event.what) ||
         std::holds_alternative<Question>(event.what) ||
         std::holds_alternative<ClientLeft>(event.what) ||
         (device_event != nullptr && device_event->kind == Kind::kServiceDied);
}

class Planner {
 public:
  explicit Planner(const Recording& recording)
      : events_(recording.events), plan_{.equipment = EquipmentOf(recording), .steps = {}} {
    for (const RecordedEvent& event : events_) {
      const auto* const joined = std::get_if<ClientJoined>(&event.what);
      if (joined != nullptr) joins_.insert(std::string(*FamilyOfSubject(joined->subject)));
    }
  }

  PlayPlan Make() {
    bool has_begun = false;
    for (size_t i = 0; i < events_.size(); ++i) {
      if (NeedsServices(events_[i]) && !std::exchange(has_begun, true)) StartTheOthers();
      Add(i);
    }
    if (!has_begun) StartTheOthers();
    if (!events_.empty()) plan_.length = events_.back().at;
    return std::move(plan_);
  }

 private:
  void Add(size_t index) {
    const RecordedEvent& event = events_[index];
    if (const auto* joined = std::get_if<ClientJoined>(&event.what)) {
      // The registration would block until the service runs, and playback could not start it.
      const bool waits = FamilyOfSubject(joined->subject) == kBatteryFamily &&
                         plan_.equipment.services.contains(std::string(kHealthService)) &&
                         !started_.contains(std::string(kHealthService));
      (waits ? waiting_ : plan_.steps).push_back(event);
    } else if (const auto* device_event = std::get_if<DeviceEvent>(&event.what)) {
      const Kind kind = device_event->kind;
      if (kind == Kind::kServiceStarted) {
        AddStart(event, device_event->service, index);
      } else if (kind == Kind::kServiceDied || kind == Kind::kNotice || kind == Kind::kReported) {
        plan_.steps.push_back(event);
      }
      // All other device events result from the library's calls.
    } else if (!std::holds_alternative<ClientCalled>(event.what)) {
      plan_.steps.push_back(event);
    }
  }

  void AddStart(const RecordedEvent& event, const std::string& service, size_t index) {
    const int refusals = service == kHealthService ? RefusalsAfter(index) : 0;
    if (refusals > 0) {
      AddUnsaid(event.at,
                Refusal{.service = service, .call = "registerCallback", .times = refusals});
    }
    plan_.steps.push_back(event);
    if (!started_.insert(service).second) return;
    const std::string family(FamilyOfService(service));
    if (family == kBatteryFamily) {
      for (RecordedEvent& joined : std::exchange(waiting_, {})) {
        joined.at = event.at;
        plan_.steps.push_back(std::move(joined));
      }
    }
    if (joins_.insert(family).second) AddUnsaid(event.at, ClientJoined{.subject = family});
  }

  void AddUnsaid(Seconds at, RecordedWhat what) {
    plan_.steps.push_back({.at = at, .what = std::move(what)});
  }

  // Starts the services that are up at time 0.
  void StartTheOthers() {
    for (const std::string& service : plan_.equipment.services) {
      const auto first =
          std::find_if(events_.begin(), events_.end(), [&](const RecordedEvent& event) {
            return IsKind(event, Kind::kServiceStarted, service) ||
                   IsKind(event, Kind::kServiceDied, service);
          });
      const bool starts_later =
          first != events_.end() && IsKind(*first, Kind::kServiceStarted, service);
      if (starts_later) continue;
      const DeviceEvent start = {.kind = Kind::kServiceStarted, .service = service};
      AddStart({.at = {}, .what = start}, service, 0);
    }
  }

  // The number of registrations that the health service refuses between `index` and its death.
  int RefusalsAfter(size_t index) const {
    int refusals = 0;
    for (size_t i = index; i < events_.size(); ++i) {
      if (IsKind(events_[i], Kind::kServiceDied, kHealthService)) break;
      if (!IsKind(events_[i], Kind::kCallRefused, kHealthService)) continue;
      const std::string& detail = std::get<DeviceEvent>(events_[i].what).detail;
      if (detail.starts_with("registerCallback")) ++refusals;
    }
    return refusals;
  }

  const std::vector<RecordedEvent>& events_;
  PlayPlan plan_;
  std::set<std::string> joins_;         // families that need no implied join
  std::set<std::string> started_;       // services that have been started before
  std::vector<RecordedEvent> waiting_;  // joins of battery clients, until the health service starts
};

}  // namespace

PlayPlan MakePlayPlan(const Recording& recording) {
  PlayPlan plan = Planner(recording).Make();
  CheckPlan(recording, plan);
  return plan;
}

}  // namespace norvik::qel::monitor
