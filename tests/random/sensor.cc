// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The sensor family: two handles that share the process's looper.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <limits>
#include <optional>

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
const Words kHandleNames = {"A", "B"};
const Words kNames = {"proximity", "hinge"};
constexpr std::array<int32_t, kSensors> kTypes = {ASENSOR_TYPE_PROXIMITY, ASENSOR_TYPE_HINGE_ANGLE};
const Words kIds = {"0", "1", "2"};
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

// A sensor's entry in the dump.
struct State {
  bool known = false;
  bool active = false;
  int data = 0;
};

struct Handle {
  std::string name;
  void* handle = nullptr;
  std::array<std::set<int>, kSensors> registered;
  std::array<State, kSensors> before;
  // Per sensor: it was absent or refused, and is not tried again before all its clients have left.
  std::array<bool, kSensors> given_up = {};
  std::array<bool, kSensors> absent = {};  // found absent; a handle looks a sensor up once
  std::array<bool, kSensors> stuck = {};   // the platform has refused to disable it
};

class Sensors : public Family {
 public:
  Sensors() : Family(Fold::kLatest, kHandleNames) {
    const Words values = {"0", "4.9", "-0.5", "7.99", "179.6", "-3", "3e10", "-3e10", "nan"};
    Add("register", 12, {kHandleNames, kNames, kIds}, &Sensors::Register);
    Add("deregister", 5, {kHandleNames, kNames, kIds}, &Sensors::Deregister);
    Add("deregister", 2, {kHandleNames, kNames, {"all"}}, &Sensors::DeregisterAll);
    Add("report", 9, {kNames, values}, &Sensors::Report);
    Add("batch", 5, {kNames, values, kNames, values}, &Sensors::Report);
    Add("start", 2, {{"both", "both", "both", "proximity", "hinge"}}, &Sensors::Start);
    Add("renew", 2, {kHandleNames}, &Sensors::RenewOne);
    const Words outcomes = {"refused"};
    AddFault("manager", outcomes, {&hub_.on(SensorFunction::kGetInstance)});
    AddFault("queue", outcomes, {&hub_.on(SensorFunction::kCreateEventQueue)});
    AddFault("find", outcomes, {&hub_.on(SensorFunction::kGetDefaultSensor)});
    AddFault("enable", outcomes, {&hub_.on(SensorFunction::kRegisterSensor)});
    AddFault("disable", outcomes, {&hub_.on(SensorFunction::kDisableSensor)});
  }

 private:
  void Begin() override {
    for (size_t i = 0; i < kHandles; ++i) BeginOne(handles_[i], kHandleNames[i]);
  }

  void End() override {
    for (Handle& handle : handles_) EndOne(handle);
    ExpectTrue(!running_ || hub_.queue_count() == 0, "event queues are left");
    for (const int32_t type : kTypes) {
      ExpectTrue(!running_ || hub_.listeners(type) == 0, "sensors are left enabled");
    }
  }

  void BeginOne(Handle& handle, const std::string& name) {
    handle = {};
    handle.name = name;
    Init(InitSensorInfo, &handle.handle, {name});
  }

  void EndOne(Handle& handle) {
    for (int i = 1; i <= 5; ++i) AddReading(0, static_cast<float>(1000 + i));
    for (const Handle& each : handles_) {
      for (const std::string& id : kIds) ClientOf(each, 0, std::stoi(id)).Loosen();
    }
    Deinit(DeinitSensorInfo, &handle.handle, {handle.name},
           [this](int i) { hub_.Report(kTypes[0], static_cast<float>(1000 + i)); });
  }

  void RenewOne(const Step& step) {
    EndOne(HandleOf(step));
    BeginOne(HandleOf(step), step[1]);
  }

  Handle& HandleOf(const Step& step) { return handles_[IndexOf(kHandleNames, step[1])]; }
  Client& ClientOf(const Handle& handle, size_t s, int id) {
    return Family::ClientOf(handle.name,
                            handle.name + "'s client " + std::to_string(id) + " of " + kNames[s],
                            reported_[s]);
  }

  void Register(const Step& step) {
    Handle& handle = HandleOf(step);
    const size_t s = IndexOf(kNames, step[2]);
    const int id = std::stoi(step[3]);
    auto& registered = handle.registered[s];
    const State& before = handle.before[s];
    Client* const client = &ClientOf(handle, s, id);
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

  void Deregister(const Step& step) {
    Handle& handle = HandleOf(step);
    const size_t s = IndexOf(kNames, step[2]);
    const int id = std::stoi(step[3]);
    auto& registered = handle.registered[s];
    const int result = kDeregister[s](handle.handle, id);
    if (registered.erase(id) == 0) {
      return ExpectEqual(result, -EINVAL, "the result for an unknown client");
    }
    ClientOf(handle, s, id).Leave();
    if (!registered.empty()) return ExpectEqual(result, 0, "the result for one of several");
    const bool given_up = std::exchange(handle.given_up[s], false);
    if (handle.before[s].active) {
      ExpectTrue(result == 0 || (faulty() && result == kRefused), "the sensor is not disabled");
    } else {
      // For a sensor that was given up, the result may be the reason.
      const bool reason = given_up && (result == -ENOSYS || result == -EINVAL);
      ExpectTrue(result == 0 || reason, "the result is " + std::to_string(result));
    }
  }

  void DeregisterAll(const Step& step) {
    for (const std::string& id : kIds) Deregister({step[0], step[1], step[2], id});
  }

  void Start(const Step& step) {
    if (std::exchange(running_, true)) return;
    for (size_t s = 0; s < kSensors; ++s) {
      exists_[s] = step[1] == "both" || step[1] == kNames[s];
      if (exists_[s]) hub_.Add(kTypes[s], kNames[s], 20'000);
    }
    hub_.Start();
  }

  // Notes a reading that is about to be reported.
  void AddReading(size_t s, float value) {
    reported_[s].insert(Truncated(value));
    if (running_ && !exists_[s]) return;
    latest_[s] = Truncated(value);
    arrived_[s] = running_;
  }

  // Reports the step's pairs of a sensor and a reading, all in one delivery.
  void Report(const Step& step) {
    std::vector<services::SensorReading> readings;
    for (size_t i = 1; i < step.size(); i += 2) {
      const size_t s = IndexOf(kNames, step[i]);
      const float value = std::stof(step[i + 1]);
      readings.push_back({.type = kTypes[s], .value = value});
      AddReading(s, value);
    }
    hub_.Report(readings);
  }

  std::array<State, kSensors> Dump(const Handle& handle) const {
    std::string text = TextOf(DumpSensorInfo, handle.handle);
    std::array<State, kSensors> states;
    const Words polls = Take(text, "SensorInfo:\n  Poll :([TF])\n");
    for (size_t s = 0; s < kSensors; ++s) {
      Take(text, s == 0 ? "  Sensor: PROXIMITY\n" : "  Sensor: HINGE_ANGLE\n");
      const Words found = Take(text, "    initialized:([TF]) active:([TF]), data:(-?\\d+)\n");
      states[s] = {
          .known = found[0] == "T", .active = found[1] == "T", .data = std::stoi(found[2])};
      std::set<int> ids;
      for (const Words& client : TakeAll(text, "    client id:(\\d+) need_to_update:([TF])\n")) {
        ids.insert(std::stoi(client[0]));
        ExpectTrue(client[1] == "F" || worker(handle.name).state().holding,
                   "a client is still owed a call");
      }
      ExpectTrue(ids == handle.registered[s],
                 "not all clients of " + kNames[s] + ", or others, are in the dump");
    }
    ExpectTrue(text.empty(), "the rest of the dump is\n" + text);
    ExpectEqual(polls[0] == "T", states[0].active || states[1].active, "whether the dump polls");
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
                  "the service's number of users of " + kNames[s]);
    }
    if (running_) {
      const size_t queues = hub_.queue_count();
      ExpectTrue(queues >= used && queues <= kHandles,
                 "there are " + std::to_string(queues) + " event queues");
    }
    arrived_ = {};
    new_ = nullptr;
  }

  // Checks one sensor of a handle. Returns whether its clients wait for the service.
  bool CheckSensor(Handle& handle, size_t s, const State& now) {
    const State& before = handle.before[s];
    const auto& registered = handle.registered[s];
    const bool was_enabled = now.active && !before.active;
    // An enabled sensor delivers its current reading as the first event.
    const bool event = now.active && (arrived_[s] || (was_enabled && latest_[s]));
    ExpectEqual(now.data, event ? *latest_[s] : before.data, "the data of " + kNames[s]);
    for (const int id : registered) {
      Client* const client = &ClientOf(handle, s, id);
      if (new_ == client && (event || worker(handle.name).state().folding)) client->Loosen();
      // The first events of both sensors arrive one after the other.
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
  // Set by the current step.
  std::array<bool, kSensors> arrived_ = {};
  Client* new_ = nullptr;
};

}  // namespace

std::unique_ptr<Family> MakeSensor() {
  return std::make_unique<Sensors>();
}

}  // namespace norvik::qel::random_test
