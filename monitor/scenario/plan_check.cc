// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "clients/subjects.h"
#include "output/json.h"
#include "scenario/play_plan.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;

// Checks the steps in order without taking them. Throws LineError for a step that cannot work.
class Checker {
 public:
  explicit Checker(const Equipment& equipment) : equipment_(equipment) {}

  void operator()(const DeviceEvent& event) {
    if (event.kind == Kind::kServiceStarted && !up_.insert(event.service).second) {
      throw LineError("the " + event.service + " service is up already");
    }
    if (event.kind != Kind::kServiceDied) return;
    if (event.service == kSensorService) {
      throw LineError("the sensor service cannot die: no client survives that");
    }
    if (up_.erase(event.service) == 0) {
      throw LineError("the " + event.service + " service is down already");
    }
  }

  void operator()(const ClientJoined& joined) {
    // Clients of the other families may wait for a service that never starts.
    const bool is_battery = FamilyOfSubject(joined.subject) == kBatteryFamily;
    if (is_battery && !equipment_.services.contains(std::string(kHealthService))) {
      throw LineError("there is no health service that a client of " + joined.subject +
                      " could wait for");
    }
    for (const std::string& key : KeysOf(joined.subject)) {
      if (!joined_.insert(key).second)
        throw LineError("a client of " + key + " has joined already");
      ever_joined_.insert(key);
    }
  }

  void operator()(const ClientLeft& left) {
    const auto covers = [&](const std::string& key) { return Covers(left.subject, key); };
    if (std::erase_if(joined_, covers) == 0)
      throw LineError("no client of " + left.subject + " has joined that could leave");
  }

  void operator()(const Refusal& refusal) {
    if (!equipment_.services.contains(refusal.service)) {
      throw LineError("there is no " + refusal.service + " service that could refuse anything");
    }
    refusals_[{refusal.service, refusal.call}] += refusal.times;
  }

  void operator()(const Question& question) const {
    CheckHasService(question.family == kBatteryQuestion ? kBatteryFamily : kThermalFamily);
  }

  void operator()(const Expectation& expectation) {
    std::visit([&](const auto& what) { CheckExpected(what); }, expectation.what);
  }

  // Valid in every state.
  void operator()(const ClientCalled& /*called*/) {}
  void operator()(const Scene& /*scene*/) {}
  void operator()(const Narration& /*narration*/) {}

 private:
  void CheckExpected(const ClientCalled& called) const {
    if (!joined_.contains(called.property)) {
      throw LineError("no client of " + called.property + " has joined that could be called");
    }
    CheckHasService(*FamilyOfProperty(called.property));
  }

  void CheckExpected(const DeviceEvent& event) {
    CheckIsUp(event.service);
    if (event.kind == Kind::kCallRefused && refusals_[{event.service, event.detail}]-- <= 0) {
      throw LineError("the " + event.service + " service has not been told to refuse " +
                      event.detail);
    }
  }

  void CheckExpected(const Silence& silence) const {
    const auto covers = [&](const std::string& key) { return Covers(silence.subject, key); };
    if (std::none_of(ever_joined_.begin(), ever_joined_.end(), covers))
      throw LineError("no client of " + silence.subject + " has joined that could be silent");
  }

  // The properties that a client of `subject` registers for.
  std::vector<std::string> KeysOf(const std::string& subject) const {
    if (FamilyOfProperty(subject)) return {subject};
    std::vector<std::string> keys;
    const auto add = [&](const std::string& key) {
      if (Covers(subject, key)) keys.push_back(key);
    };
    for (const Property* property : kBatteryProperties) add(std::string(property->key));
    for (const Property* property : kSensorProperties) add(std::string(property->key));
    for (const TemperatureReport& temperature : equipment_.temperatures) {
      add(temperature.type + ":" + temperature.name);
    }
    return keys;
  }

  bool IsUp(std::string_view service) const { return up_.contains(std::string(service)); }
  void CheckIsUp(std::string_view service) const {
    if (!IsUp(service)) throw LineError("the " + std::string(service) + " service is down");
  }
  // Throws LineError unless a service of the family is up.
  void CheckHasService(std::string_view family) const {
    if (family == kBatteryFamily) CheckIsUp(kHealthService);
    if (family == kSensorFamily) CheckIsUp(kSensorService);
    if (family == kThermalFamily && !IsUp(kHidlThermalService)) CheckIsUp(kThermalService);
  }

  const Equipment& equipment_;
  std::set<std::string> up_;                                     // services
  std::set<std::string> joined_;                                 // properties
  std::set<std::string> ever_joined_;                            // properties
  std::map<std::pair<std::string, std::string>, int> refusals_;  // pending, by service and call
};

}  // namespace

void CheckPlan(const Recording& recording, const PlayPlan& plan) {
  Checker checker(plan.equipment);
  for (const RecordedEvent& step : plan.steps) {
    try {
      std::visit(checker, step.what);
    } catch (const LineError& error) {
      throw std::runtime_error(PlaceOf(recording, step) + ": " + error.what());
    }
  }
}

}  // namespace norvik::qel::monitor
