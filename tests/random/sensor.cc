// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The sensor family: two handles, which share the process's looper.
#include <stdio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <sstream>

#include "dump_text.h"
#include "family.h"
#include "pauses.h"
#include "quorvel.h"
#include "quorvel/simulated/sensor_hub.h"

namespace norvik::qel::random_test {

namespace {

using fake::SensorFunction;

constexpr size_t kHandles = 2;
constexpr size_t kSensors = 2;
constexpr std::array kNames = {"proximity", "hinge"};
constexpr std::array<int32_t, kSensors> kTypes = {ASENSOR_TYPE_PROXIMITY, ASENSOR_TYPE_HINGE_ANGLE};
constexpr int kIds = 3;
constexpr std::array kRegister = {RegisterProximitySensorCallback,
                                  RegisterHingeAngleSensorCallback};
constexpr std::array kDeregister = {DeregisterProximitySensorCallback,
                                    DeregisterHingeAngleSensorCallback};
constexpr int kRefused = STATUS_UNKNOWN_ERROR;

int Truncated(float value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483648.0F) return std::numeric_limits<int>::max();
  if (value <= -2147483648.0F) return std::numeric_limits<int>::min();
  return static_cast<int>(value);
}

size_t SensorOf(const std::string& name) {
  return name == kNames[0] ? 0 : 1;
}

// What the dump says of a sensor.
struct State {
  bool known = false;
  bool active = false;
  int data = 0;
};

struct Handle {
  std::string name;
  void* handle = nullptr;
  std::array<std::array<Client*, kIds>, kSensors> clients = {};
  std::array<std::set<int>, kSensors> registered;
  std::array<State, kSensors> before;
  // By sensor. Its clients have to leave before it is tried again: it was found absent, or refused.
  std::array<bool, kSensors> given_up = {};
  std::array<bool, kSensors> absent = {};  // found so: a handle asks once for a sensor
  std::array<bool, kSensors> stuck = {};   // the platform has refused to disable it
};

class Sensors : public Family {
 public:
  Sensors() : Family(Fold::kLatest) {
    AddFault("manager", {&hub_.on(SensorFunction::kGetInstance)});
    AddFault("queue", {&hub_.on(SensorFunction::kCreateEventQueue)});
    AddFault("find", {&hub_.on(SensorFunction::kGetDefaultSensor)});
    AddFault("enable", {&hub_.on(SensorFunction::kRegisterSensor)});
    AddFault("disable", {&hub_.on(SensorFunction::kDisableSensor)});
    for (size_t i = 0; i < kHandles; ++i) Begin(handles_[i], i == 0 ? "A" : "B");
  }

  void Finish() override {
    for (Handle& handle : handles_) End(handle);
    ExpectTrue(!running_ || hub_.queue_count() == 0, "event queues are left");
    for (const int32_t type : kTypes) {
      ExpectTrue(!running_ || hub_.listeners(type) == 0, "sensors are left enabled");
    }
    CheckClients();
  }

 private:
  void Begin(Handle& handle, const std::string& name) {
    handle = {};
    handle.name = name;
    Init(InitSensorInfo, &handle.handle, {name});
    for (size_t s = 0; s < kSensors; ++s) {
      for (int id = 0; id < kIds; ++id) {
        handle.clients[s][static_cast<size_t>(id)] = &AddClient(
            name + "'s client " + std::to_string(id) + " of " + kNames[s], name, reported_[s]);
      }
    }
  }

  void End(Handle& handle) {
    for (int i = 1; i <= 5; ++i) AddReading(0, static_cast<float>(1000 + i));
    for (Handle& each : handles_) {
      for (Client* client : each.clients[0]) client->Loosen();
    }
    Deinit(DeinitSensorInfo, &handle.handle, {handle.name},
           [this](int i) { hub_.Report(kTypes[0], static_cast<float>(1000 + i)); });
  }

  void Act(const Step& step) override {
    const std::string& verb = step[0];
    if (verb == "start") return Start(step[1]);
    if (verb == "report" || verb == "batch") return Report({step.begin() + 1, step.end()});
    Handle& handle = handles_[step[1] == "A" ? 0 : 1];
    if (verb == "register") Register(handle, SensorOf(step[2]), atoi(step[3].c_str()));
    if (verb == "deregister") Deregister(handle, SensorOf(step[2]), step[3]);
    if (verb == "renew") {
      End(handle);
      Begin(handle, step[1]);
    }
  }

  void Register(Handle& handle, size_t s, int id) {
    auto& registered = handle.registered[s];
    const State& before = handle.before[s];
    Client* const client = handle.clients[s][static_cast<size_t>(id)];
    const int result = kRegister[s](handle.handle, id, Client::Hear, client);
    if (registered.contains(id)) return ExpectEqual(result, -EINVAL, "the result the second time");
    const bool asks = registered.empty() && running_;
    const bool refused = result == -ENOSYS || result == -EINVAL || (faulty() && result == kRefused);
    const bool may_refuse = faulty() || before.active || !exists_[s] || handle.absent[s];
    ExpectTrue(result == 0 || (refused && asks && may_refuse),
               "the result is " + std::to_string(result));
    if (asks && faulty()) handle.given_up[s] = true;
    if (result == -ENOSYS) handle.absent[s] = true;
    if (result != 0) return;
    client->Join();
    registered.insert(id);
    new_ = client;
  }

  void Deregister(Handle& handle, size_t s, const std::string& which) {
    auto& registered = handle.registered[s];
    for (int id = 0; id < kIds; ++id) {
      if (which != "all" && which != std::to_string(id)) continue;
      const int result = kDeregister[s](handle.handle, id);
      if (registered.erase(id) == 0) {
        ExpectEqual(result, -EINVAL, "the result for an unknown client");
        continue;
      }
      handle.clients[s][static_cast<size_t>(id)]->Leave();
      if (!registered.empty()) {
        ExpectEqual(result, 0, "the result for one of several");
      } else if (handle.before[s].active) {
        ExpectTrue(result == 0 || (faulty() && result == kRefused), "the sensor is not disabled");
      } else {
        // Of a sensor that was given up, the reason.
        const bool reason = handle.given_up[s] && (result == -ENOSYS || result == -EINVAL);
        ExpectTrue(result == 0 || reason, "the result is " + std::to_string(result));
      }
      if (registered.empty()) handle.given_up[s] = false;
    }
  }

  void Start(const std::string& which) {
    if (running_) return;
    running_ = true;
    for (size_t s = 0; s < kSensors; ++s) {
      exists_[s] = which == "both" || which == kNames[s];
      if (exists_[s]) hub_.Add(kTypes[s], kNames[s], 20'000);
    }
    hub_.Start();
  }

  // A reading that is about to be reported.
  void AddReading(size_t s, float value) {
    reported_[s].insert(Truncated(value));
    if (running_ && !exists_[s]) return;
    latest_[s] = Truncated(value);
    arrived_[s] = running_;
  }

  // Pairs of a sensor and a reading, which arrive together.
  void Report(const Words& words) {
    std::vector<services::SensorReading> readings;
    for (size_t i = 0; i < words.size(); i += 2) {
      const size_t s = SensorOf(words[i]);
      const float value = strtof(words[i + 1].c_str(), nullptr);
      readings.push_back({.type = kTypes[s], .value = value});
      AddReading(s, value);
    }
    hub_.Report(readings);
  }

  std::array<State, kSensors> Dump(const Handle& handle) const {
    const std::string text = TextOf(DumpSensorInfo, handle.handle);
    std::array<State, kSensors> states;
    std::array<std::set<int>, kSensors> ids;
    char poll = 0;
    size_t s = kSensors;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      char known = 0;
      char active = 0;
      char owed = 0;
      int number = 0;
      if (line == "SensorInfo:" || sscanf(line.c_str(), "  Poll :%c", &poll) == 1) continue;
      if (line == "  Sensor: PROXIMITY" || line == "  Sensor: HINGE_ANGLE") {
        s = line == "  Sensor: PROXIMITY" ? 0 : 1;
      } else if (s < kSensors && sscanf(line.c_str(), "    initialized:%c active:%c, data:%d",
                                        &known, &active, &number) == 3) {
        states[s] = {.known = known == 'T', .active = active == 'T', .data = number};
      } else if (s < kSensors &&
                 sscanf(line.c_str(), "    client id:%d need_to_update:%c", &number, &owed) == 2) {
        ids[s].insert(number);
        ExpectTrue(owed == 'F' || worker(handle.name).state().holding,
                   "a client is still owed a call");
      } else {
        Fail("the dump is\n" + text);
      }
    }
    for (size_t i = 0; i < kSensors; ++i) {
      ExpectTrue(ids[i] == handle.registered[i],
                 "not all clients, or others, are in the dump\n" + text);
    }
    ExpectEqual(poll == 'T', states[0].active || states[1].active, "whether the dump polls");
    return states;
  }

  void Check(const Step& /*step*/) override {
    std::array<int, kSensors> enabled = {};
    size_t used = 0;
    size_t waiting = 0;
    for (Handle& handle : handles_) {
      const std::array<State, kSensors> now = Dump(handle);
      bool waits = false;
      for (size_t s = 0; s < kSensors; ++s) {
        waits |= CheckSensor(handle, s, now[s]);
        enabled[s] += now[s].active ? 1 : 0;
      }
      used += now[0].active || now[1].active ? 1 : 0;
      waiting += waits ? 1 : 0;
      handle.before = now;
    }
    ExpectTrue(PausingWorkers() >= waiting, "clients wait, but the service is not looked for");
    ExpectTrue(PausingWorkers() <= kHandles, "more workers pause than there are handles");
    for (size_t s = 0; running_ && s < kSensors; ++s) {
      ExpectEqual(hub_.listeners(kTypes[s]), enabled[s],
                  std::string("the service's number of users of ") + kNames[s]);
    }
    if (running_) {
      const size_t queues = hub_.queue_count();
      ExpectTrue(queues >= used && queues <= kHandles,
                 "there are " + std::to_string(queues) + " event queues");
    }
    arrived_ = {};
    new_ = nullptr;
  }

  // Whether its clients wait for the service.
  bool CheckSensor(Handle& handle, size_t s, const State& now) {
    const State& before = handle.before[s];
    const auto& registered = handle.registered[s];
    const bool was_enabled = now.active && !before.active;
    // Its first event is the reading that it has.
    const bool event = now.active && (arrived_[s] || (was_enabled && latest_[s]));
    ExpectEqual(now.data, event ? *latest_[s] : before.data,
                std::string("the data of ") + kNames[s]);
    for (const int id : registered) {
      Client* const client = handle.clients[s][static_cast<size_t>(id)];
      if (new_ == client && (event || worker(handle.name).state().folding)) client->Loosen();
      // The first events of two sensors come one after the other.
      if (was_enabled && worker(handle.name).state().holding) client->Loosen();
      if ((new_ == client && now.active) || event) client->Expect(now.data);
    }
    if (now.active) {
      ExpectTrue(running_, "enabled without a service");
      ExpectTrue(!registered.empty() || before.active, "enabled without clients");
      ExpectTrue(!registered.empty() || handle.stuck[s] || faulty(), "left enabled");
      handle.stuck[s] |= registered.empty();
      handle.given_up[s] = false;
      return false;
    }
    if (registered.empty()) return false;
    if (running_ && ticked()) {
      // The workers have found the service.
      ExpectTrue(faulty() || !exists_[s] || handle.given_up[s] || handle.absent[s],
                 "the service is there, but the sensor is not enabled");
      handle.given_up[s] = true;
      handle.absent[s] |= !exists_[s] || now.known;
    }
    return !handle.given_up[s];
  }

  simulated::SensorHub hub_;
  bool running_ = false;
  std::array<bool, kSensors> exists_ = {};
  std::array<std::optional<int>, kSensors> latest_;
  std::array<std::set<int>, kSensors> reported_ = {std::set{0}, std::set{0}};
  std::array<Handle, kHandles> handles_;
  // In this step:
  std::array<bool, kSensors> arrived_ = {};
  Client* new_ = nullptr;
};

}  // namespace

Grammar SensorGrammar() {
  const Words handles = {"A", "B"};
  const Words sensors(kNames.begin(), kNames.end());
  const Words ids = {"0", "1", "2"};
  const Words values = {"0", "4.9", "-0.5", "7.99", "179.6", "-3", "3e10", "-3e10", "nan"};
  return {
      {"register", 8, {handles, sensors, ids}},
      {"deregister", 4, {handles, sensors, {"0", "1", "2", "all"}}},
      {"report", 6, {sensors, values}},
      {"batch", 3, {sensors, values, sensors, values}},
      {"start", 1, {{"both", "both", "both", "proximity", "hinge"}}},
      {"hold", 2, {handles}},
      {"release", 3, {handles}},
      {"fault", 2, {{"manager", "queue", "find", "enable", "disable"}, {"refused"}}},
      {"renew", 1, {handles}},
  };
}

std::unique_ptr<Family> MakeSensor() {
  return std::make_unique<Sensors>();
}

}  // namespace norvik::qel::random_test
