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
#include <tuple>

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
constexpr int kSpare = 3;  // the id of a client that comes and goes in bursts
constexpr std::array kRegister = {RegisterProximitySensorCallback,
                                  RegisterHingeAngleSensorCallback};
constexpr std::array kDeregister = {DeregisterProximitySensorCallback,
                                    DeregisterHingeAngleSensorCallback};
constexpr std::array kFunctions = {std::pair("manager", SensorFunction::kGetInstance),
                                   std::pair("queue", SensorFunction::kCreateEventQueue),
                                   std::pair("find", SensorFunction::kGetDefaultSensor),
                                   std::pair("enable", SensorFunction::kRegisterSensor),
                                   std::pair("disable", SensorFunction::kDisableSensor)};
constexpr int kRefused = -5;

void OnReading(int value, void* cookie) {
  static_cast<Client*>(cookie)->Hear(value);
}

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
  bool operator==(const State&) const = default;
};

struct Handle {
  void* handle = nullptr;
  Worker worker{Fold::kLatest};
  std::array<std::map<int, Client*>, kSensors> registered;
  std::array<State, kSensors> before;
  // Its clients have to leave before it is tried again: it was found absent, or was refused.
  std::array<bool, kSensors> given_up = {};
};

class Sensors : public Family {
 public:
  Sensors() {
    for (auto& handle : handles_) Begin(handle);
  }

  void Finish() override {
    for (auto& handle : handles_) End(*handle, /*busy=*/true);
    ExpectTrue(!running_ || hub_.queue_count() == 0, "event queues are left");
    for (const int32_t type : kTypes) {
      ExpectTrue(!running_ || hub_.listeners(type) == 0, "sensors are left enabled");
    }
    ExpectNoThreads({"sensor_poll", "sensor_callback", "sensor_reconnect"});
    ExpectEqual(PausingWorkers(), size_t{0}, "the number of workers that pause");
  }

 private:
  void Begin(std::unique_ptr<Handle>& handle) {
    past_.push_back(std::exchange(handle, std::make_unique<Handle>()));
    InitSensorInfo(&handle->handle);
    ExpectTrue(handle->handle != nullptr, "no handle");
  }

  void End(Handle& handle, bool busy) {
    handle.worker.Release();
    const auto deinit = [&] {
      if (handle.handle == nullptr) return;
      DeinitSensorInfo(&handle.handle);
      ExpectTrue(handle.handle == nullptr, "the handle is not null");
      for (auto& clients : handle.registered) {
        for (auto& [id, client] : clients) client->Close();
        clients.clear();
      }
    };
    if (busy) {
      Burst(
          5, [this](int i) { hub_.Report(kTypes[0], 1000.0F + static_cast<float>(i)); }, deinit);
    } else {
      deinit();
    }
    Settle();
  }

  void Act(const Step& step) override {
    const std::string& verb = step[0];
    if (verb == "start") return Start(step[1]);
    if (verb == "report") return Report({step[1], step[2]});
    if (verb == "batch") return Report({step.begin() + 1, step.end()});
    if (verb == "stranger") return SendStranger();
    if (verb == "fault") {
      for (const auto& [name, function] : kFunctions) {
        if (name == step[1]) hub_.on(function).Then({.status = kRefused});
      }
      return;
    }
    std::unique_ptr<Handle>& handle = handles_[step[1] == "A" ? 0 : 1];
    if (verb == "register") Register(*handle, SensorOf(step[2]), atoi(step[3].c_str()));
    if (verb == "deregister") Deregister(*handle, SensorOf(step[2]), step[3]);
    if (verb == "hold") handle->worker.Hold();
    if (verb == "release") handle->worker.Release();
    if (verb == "burst") DoBurst(*handle, SensorOf(step[2]), atoi(step[3].c_str()));
    if (verb == "renew") {
      End(*handle, /*busy=*/false);
      Begin(handle);
    }
  }

  void Register(Handle& handle, size_t s, int id) {
    auto& clients = handle.registered[s];
    const State& before = handle.before[s];
    all_.push_back(std::make_unique<Client>(
        std::string("client ") + std::to_string(id) + " of " + kNames[s], handle.worker));
    Client* const client = all_.back().get();
    const int result = kRegister[s](handle.handle, id, OnReading, client);
    if (clients.contains(id)) return ExpectEqual(result, -EINVAL, "the result for a second time");
    if (!clients.empty()) {
      ExpectEqual(result, 0, "the result for a further client");
    } else if (!running_) {
      ExpectEqual(result, 0, "the result while there is no service");
    } else if (faulty()) {
      ExpectTrue(result == 0 || result == kRefused || result == -ENOSYS || result == -EINVAL,
                 "the result is " + std::to_string(result));
      handle.given_up[s] = true;
    } else if (before.active) {
      ExpectEqual(result, -EINVAL, "the result for a sensor that is still enabled");
    } else if (!exists_[s]) {
      ExpectEqual(result, -ENOSYS, "the result for a sensor that is absent");
    } else if (result != 0) {
      ExpectTrue(result == -ENOSYS && before.known && absent_.contains({&handle, s}),
                 "the result is " + std::to_string(result));
    }
    if (result == -ENOSYS) absent_.insert({&handle, s});
    if (result != 0) return;
    client->Join();
    clients[id] = client;
    new_ = {&handle, s, client};
  }

  void Deregister(Handle& handle, size_t s, const std::string& which) {
    auto& clients = handle.registered[s];
    for (int id = 0; id < kSpare; ++id) {
      if (which != "all" && which != std::to_string(id)) continue;
      const int result = kDeregister[s](handle.handle, id);
      const auto found = clients.find(id);
      if (found == clients.end()) {
        ExpectEqual(result, -EINVAL, "the result for an unknown client");
        continue;
      }
      found->second->Leave();
      left_.push_back(found->second);
      clients.erase(found);
      if (!clients.empty()) {
        ExpectEqual(result, 0, "the result for one of several");
      } else if (handle.before[s].active) {
        ExpectTrue(result == 0 || (faulty() && result == kRefused), "the sensor is not disabled");
      } else {
        // Of a sensor that was given up, the reason.
        const bool reason = handle.given_up[s] && (result == -ENOSYS || result == -EINVAL);
        ExpectTrue(result == 0 || reason, "the result is " + std::to_string(result));
      }
      if (clients.empty()) handle.given_up[s] = false;
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

  // Pairs of a sensor and a reading, which arrive together.
  void Report(const Words& words) {
    std::vector<services::SensorReading> readings;
    for (size_t i = 0; i < words.size(); i += 2) {
      const size_t s = SensorOf(words[i]);
      const float value = strtof(words[i + 1].c_str(), nullptr);
      readings.push_back({.type = kTypes[s], .value = value});
      ever_[s].insert(Truncated(value));
      if (running_ && !exists_[s]) continue;
      latest_[s] = Truncated(value);
      reported_[s] = running_;
    }
    hub_.Report(readings);
  }

  void SendStranger() {
    if (!running_) return;
    ASensorEvent event = {};
    event.version = sizeof event;
    event.type = 77;
    hub_.SendUnasked({event});
  }

  void ClearFaults() override {
    for (const auto& [name, function] : kFunctions) hub_.on(function).Clear();
  }

  // Readings beside a client that comes and goes, and dumps.
  void DoBurst(Handle& handle, size_t s, int count) {
    for (const auto& each : handles_) {
      if (each->worker.busy()) return;
    }
    if (faulty() || !handle.before[s].active || handle.registered[s].empty()) return;
    const int first = burst_value_ + 1;
    burst_value_ += count;
    for (int value = first; value <= burst_value_; ++value) ever_[s].insert(value);
    Client spare("the spare client", handle.worker);
    Burst(
        count, [&](int i) { hub_.Report(kTypes[s], static_cast<float>(first + i - 1)); },
        [&] {
          ExpectEqual(kRegister[s](handle.handle, kSpare, OnReading, &spare), 0,
                      "the spare client's registration");
          std::ignore = TextOf(DumpSensorInfo, handle.handle);
          ExpectEqual(kDeregister[s](handle.handle, kSpare), 0, "the spare client's leaving");
        });
    latest_[s] = burst_value_;
    for (const auto& each : handles_) {
      for (const auto& [id, client] : each->registered[s]) {
        if (!each->before[s].active) continue;
        CheckBurst(*client, Fold::kLatest, each->before[s].data, first, burst_value_);
      }
      if (each->before[s].active) each->before[s].data = burst_value_;
    }
  }

  static std::array<State, kSensors> Dump(const Handle& handle) {
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
        ExpectTrue(owed == 'F' || handle.worker.holding(), "a client is still owed a call");
      } else {
        Fail("the dump is\n" + text);
      }
    }
    for (size_t i = 0; i < kSensors; ++i) {
      std::set<int> asked;
      for (const auto& [id, client] : handle.registered[i]) asked.insert(id);
      ExpectTrue(ids[i] == asked, "not all clients, or others, are in the dump\n" + text);
    }
    ExpectEqual(poll == 'T', states[0].active || states[1].active, "whether the dump polls");
    return states;
  }

  void Check(const Step& step) override {
    std::array<int, kSensors> enabled = {};
    size_t used = 0;
    size_t waiting = 0;
    for (const auto& handle : handles_) {
      const std::array<State, kSensors> now = Dump(*handle);
      bool waits = false;
      for (size_t s = 0; s < kSensors; ++s) {
        waits |= CheckSensor(*handle, s, now[s], step);
        enabled[s] += now[s].active ? 1 : 0;
      }
      used += now[0].active || now[1].active ? 1 : 0;
      waiting += waits ? 1 : 0;
      handle->before = now;
    }
    std::set<int> ever = {0};
    for (const auto& of_sensor : ever_) ever.insert(of_sensor.begin(), of_sensor.end());
    for (Client* client : left_) client->Check(ever);
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
    reported_ = {};
    new_ = {};
  }

  // Whether its clients wait for the service.
  bool CheckSensor(Handle& handle, size_t s, const State& now, const Step& step) {
    const State& before = handle.before[s];
    const auto& clients = handle.registered[s];
    const bool was_enabled = now.active && !before.active;
    // Its first event is the reading that it has.
    const bool event = now.active && (reported_[s] || (was_enabled && latest_[s]));
    ExpectEqual(now.data, event ? *latest_[s] : before.data,
                std::string("the data of ") + kNames[s]);
    for (const auto& [id, client] : clients) {
      const bool greeted = new_.client == client && now.active;
      if (new_.client == client && (event || handle.worker.folding())) client->Loosen();
      // The first events of two sensors come one after the other.
      if (was_enabled && handle.worker.holding()) client->Loosen();
      if (greeted || event) client->Expect(now.data);
      std::set<int> ever = ever_[s];
      ever.insert({0, before.data});
      client->Check(ever);
    }
    if (now.active) {
      ExpectTrue(running_, "enabled without a service");
      ExpectTrue(!clients.empty() || before.active, "enabled without clients");
      ExpectTrue(!clients.empty() || stuck_.contains({&handle, s}) || faulty(), "left enabled");
      if (clients.empty()) stuck_.insert({&handle, s});
      handle.given_up[s] = false;
      return false;
    }
    if (clients.empty()) return false;
    if (running_ && step[0] == "tick" && pausing_before() > 0) {
      // The workers have found the service.
      ExpectTrue(faulty() || !exists_[s] || handle.given_up[s] || absent_.contains({&handle, s}),
                 "the service is there, but the sensor is not enabled");
      handle.given_up[s] = true;
      if (!exists_[s] || now.known) absent_.insert({&handle, s});
    }
    return !handle.given_up[s];
  }

  simulated::SensorHub hub_;
  bool running_ = false;
  std::array<bool, kSensors> exists_ = {};
  std::array<std::optional<int>, kSensors> latest_;
  std::array<std::set<int>, kSensors> ever_;
  int burst_value_ = 10'000;

  std::array<std::unique_ptr<Handle>, kHandles> handles_;
  // Those that are gone stay, to hear what they must not.
  std::vector<std::unique_ptr<Handle>> past_;
  std::vector<std::unique_ptr<Client>> all_;
  std::set<std::pair<Handle*, size_t>> absent_;  // a handle asks once for a sensor
  std::set<std::pair<Handle*, size_t>> stuck_;   // the platform has refused to disable it
  std::vector<Client*> left_;
  // In this step:
  std::array<bool, kSensors> reported_ = {};
  struct {
    Handle* handle = nullptr;
    size_t sensor = 0;
    Client* client = nullptr;
  } new_;
};

}  // namespace

Grammar SensorGrammar() {
  const Words handles = {"A", "B"};
  const Words sensors(kNames.begin(), kNames.end());
  const Words ids = {"0", "1", "2"};
  const Words values = {"0", "4.9", "-0.5", "7.99", "179.6", "-3", "3e10", "-3e10", "nan"};
  Words faults;
  for (const auto& [name, function] : kFunctions) faults.emplace_back(name);
  return {
      {"register", 8, {handles, sensors, ids}},
      {"deregister", 4, {handles, sensors, {"0", "1", "2", "all"}}},
      {"report", 6, {sensors, values}},
      {"batch", 3, {sensors, values, sensors, values}},
      {"stranger", 1},
      {"start", 1, {{"both", "both", "both", "proximity", "hinge"}}},
      {"hold", 2, {handles}},
      {"release", 3, {handles}},
      {"fault", 2, {faults}},
      {"burst", 1, {handles, sensors, {"2", "20"}}},
      {"renew", 1, {handles}},
  };
}

std::unique_ptr<Family> MakeSensor() {
  return std::make_unique<Sensors>();
}

}  // namespace norvik::qel::random_test
