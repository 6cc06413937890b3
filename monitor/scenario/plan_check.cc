// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/plan_check.h"

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "clients/subjects.h"
#include "recording/recording_fields.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;

// Goes through the steps without taking them. Whatever cannot work is thrown as a LineError.
class Checker {
 public:
  explicit Checker(const Equipment& equipment) : equipment_(equipment) {}

  void Check(const PlayPlan::Step& step) {
    refusals_[{std::string(kHealthService), "registerCallback"}] += step.refusals;
    std::visit([&](const auto& what) { Check(what); }, step.event.what);
  }

 private:
  void Check(const DeviceEvent& event);
  void Check(const ClientJoined& joined);
  void Check(const ClientLeft& left);
  void Check(const Refusal& refusal);
  void Check(const Question& question) const;
  void Check(const Expectation& expectation) {
    std::visit([&](const auto& what) { CheckExpected(what); }, expectation.what);
  }
  // Always right.
  void Check(const ClientCalled& /*called*/) {}
  void Check(const Scene& /*scene*/) {}
  void Check(const Narration& /*narration*/) {}

  void CheckExpected(const ClientCalled& called) const;
  void CheckExpected(const DeviceEvent& event);
  void CheckExpected(const Silence& silence) const;

  // The properties that a subject joins with.
  std::vector<std::string> KeysOf(std::string_view subject) const;
  bool IsUp(std::string_view service) const { return up_.contains(std::string(service)); }
  void CheckIsUp(std::string_view service) const {
    if (!IsUp(service)) throw LineError("the " + std::string(service) + " service is down");
  }
  // One of its services.
  void CheckHasService(std::string_view family) const;

  const Equipment& equipment_;
  std::set<std::string> up_;                                     // services
  std::set<std::string> joined_;                                 // properties
  std::set<std::string> ever_joined_;                            // properties
  std::map<std::pair<std::string, std::string>, int> refusals_;  // to come, by service and call
};

void Checker::Check(const DeviceEvent& event) {
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

void Checker::Check(const ClientJoined& joined) {
  // All others may join and wait.
  const bool is_battery = FamilyOfSubject(joined.subject) == kBatteryFamily;
  if (is_battery && !equipment_.services.contains(std::string(kHealthService))) {
    throw LineError("there is no health service that a client of " + joined.subject +
                    " could wait for");
  }
  for (const std::string& key : KeysOf(joined.subject)) {
    if (!joined_.insert(key).second) throw LineError("a client of " + key + " has joined already");
    ever_joined_.insert(key);
  }
}

void Checker::Check(const ClientLeft& left) {
  const auto covers = [&](const std::string& key) { return Covers(left.subject, key); };
  if (std::erase_if(joined_, covers) == 0)
    throw LineError("no client of " + left.subject + " has joined that could leave");
}

void Checker::Check(const Refusal& refusal) {
  if (!equipment_.services.contains(refusal.service)) {
    throw LineError("there is no " + refusal.service + " service that could refuse anything");
  }
  refusals_[{refusal.service, refusal.call}] += refusal.times;
}

void Checker::Check(const Question& question) const {
  CheckHasService(question.family == kBatteryQuestion ? kBatteryFamily : kThermalFamily);
}

void Checker::CheckExpected(const ClientCalled& called) const {
  if (!joined_.contains(called.property)) {
    throw LineError("no client of " + called.property + " has joined that could be called");
  }
  CheckHasService(*FamilyOfProperty(called.property));
}

void Checker::CheckExpected(const DeviceEvent& event) {
  CheckIsUp(event.service);
  if (event.kind == Kind::kCallRefused && refusals_[{event.service, event.detail}]-- <= 0) {
    throw LineError("the " + event.service + " service has not been told to refuse " +
                    event.detail);
  }
}

void Checker::CheckExpected(const Silence& silence) const {
  const bool any =
      std::any_of(ever_joined_.begin(), ever_joined_.end(),
                  [&](const std::string& key) { return Covers(silence.subject, key); });
  if (!any) throw LineError("no client of " + silence.subject + " has joined that could be silent");
}

std::vector<std::string> Checker::KeysOf(std::string_view subject) const {
  std::vector<std::string> keys;
  if (subject == kBatteryFamily) {
    for (const Property* property : kBatteryProperties) keys.emplace_back(property->key);
  } else if (subject == kSensorFamily) {
    for (const Property* property : kSensorProperties) keys.emplace_back(property->key);
  } else if (subject == kThermalFamily) {
    for (const TemperatureReport& temperature : equipment_.temperatures) {
      std::string key = temperature.type + ":" + temperature.name;
      if (TemperatureOf(key)) keys.push_back(std::move(key));
    }
  } else {
    keys.emplace_back(subject);
  }
  return keys;
}

void Checker::CheckHasService(std::string_view family) const {
  if (family == kBatteryFamily) CheckIsUp(kHealthService);
  if (family == kSensorFamily) CheckIsUp(kSensorService);
  if (family == kThermalFamily && !IsUp(kHidlThermalService)) CheckIsUp(kThermalService);
}

}  // namespace

void CheckPlan(const Recording& recording, const PlayPlan& plan) {
  Checker checker(plan.equipment);
  for (const PlayPlan::Step& step : plan.steps) {
    try {
      checker.Check(step);
    } catch (const LineError& error) {
      throw std::runtime_error(PlaceOf(recording, step.event) + ": " + error.what());
    }
  }
}

}  // namespace norvik::qel::monitor
