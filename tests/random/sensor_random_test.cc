// Sensor random tests: two handles, since the platform has one looper for all.
#include <algorithm>
#include <array>
#include <cerrno>
#include <deque>
#include <limits>
#include <thread>

#include "dump_text.h"
#include "pauses.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/simulated/sensor_hub.h"
#include "random_run.h"
#include "worker_model.h"

namespace norvik::qel::random_test {

namespace {

using Call = Calls::Call;
using fake::SensorFunction;

constexpr int kSensors = 2;
constexpr int kHandles = 2;
constexpr int kIds = 4;
constexpr int kSpare = kIds;  // comes and goes in storms
constexpr std::array kNames = {"PROXIMITY", "HINGE_ANGLE"};
constexpr std::array<int32_t, kSensors> kTypes = {ASENSOR_TYPE_PROXIMITY, ASENSOR_TYPE_HINGE_ANGLE};

constexpr std::array kRegister = {RegisterProximitySensorCallback,
                                  RegisterHingeAngleSensorCallback};
constexpr std::array kDeregister = {DeregisterProximitySensorCallback,
                                    DeregisterHingeAngleSensorCallback};

// A cookie is a client.
struct Client {
  Calls* calls;
  int number;  // the sensor, and the id
};

void OnReading(int value, void* cookie) {
  const auto* client = static_cast<const Client*>(cookie);
  client->calls->Put(client->number, value);
}

// Results that the next calls of a function have.
constexpr int kWorks = 0;
using Script = std::deque<int>;

struct Phone {
  bool running = false;
  std::array<bool, kSensors> has = {};
  std::array<std::optional<float>, kSensors> latest = {};
  // What the next calls come to; whichever handle makes them.
  Script manager, queue, sensor, enable, disable;
};

int Next(Script& script) {
  if (script.empty()) return kWorks;
  const int result = script.front();
  script.pop_front();
  return result;
}

int Truncated(float value) {
  if (value != value) return 0;
  if (value >= 2147483648.0F) return std::numeric_limits<int>::max();
  if (value <= -2147483648.0F) return std::numeric_limits<int>::min();
  return static_cast<int>(value);
}

// One handle, and what its clients may see of it.
class SensorModel {
 public:
  explicit SensorModel(Phone& phone) : phone_(phone) {}
  SensorModel(const SensorModel&) = delete;
  SensorModel& operator=(const SensorModel&) = delete;

  struct Owed {
    int id;
    bool owed;
  };
  struct Sensor {
    bool known = false;   // has been asked for
    bool exists = false;  // and was there
    bool active = false;
    int data = 0;
    std::vector<Owed> clients;
  };
  std::array<Sensor, kSensors> sensors;
  bool connected = false;
  bool polling = false;
  std::vector<int> waiting;  // sensors asked for while the service cannot be used
  // Events on their way: what a sensor reported when it was enabled.
  std::vector<int> reported;
  std::vector<Call> calls;
  bool hold = false;
  bool held = false;

  RetryModel reconnect{10, [this] { return Reconnect(); }};

  int Register(int sensor, int id) {
    auto& clients = sensors[sensor].clients;
    if (Has(sensor, id)) return -EINVAL;
    if (clients.empty()) {
      const int result = Enable(sensor);
      if (result != 0) return result;
    }
    clients.push_back({id, true});
    StartDispatch();
    // The worker comes to it when the handle is free.
    if (std::exchange(reconnect_wanted_, false)) reconnect.Start();
    return 0;
  }

  int Deregister(int sensor, int id) {
    auto& clients = sensors[sensor].clients;
    if (!Has(sensor, id)) return -EINVAL;
    std::erase_if(clients, [&](const Owed& client) { return client.id == id; });
    return clients.empty() ? Disable(sensor) : 0;
  }

  // Readings that arrive in one delivery. Those of a sensor that is not enabled do not come.
  void Report(const std::vector<int>& which) {
    bool owed = false;
    bool any = false;
    for (const int sensor : which) {
      Sensor& state = sensors[sensor];
      if (!state.active) continue;
      any = true;
      state.data = Truncated(*phone_.latest[sensor]);
      for (Owed& client : state.clients) owed = client.owed = true;
    }
    if (any && owed) StartDispatch();
  }
  // What arrives late arrives now.
  void DeliverReported() {
    for (const int sensor : std::exchange(reported, {})) Report({sensor});
  }

  void Release() {
    hold = false;
    if (!std::exchange(held, false)) return;
    calls.insert(calls.end(), rest_.begin(), rest_.end());
    rest_.clear();
    if (std::exchange(again_, false)) Dispatch();
  }

  std::string Dump() const {
    const auto letter = [](bool flag) { return flag ? "T" : "F"; };
    std::string text = std::string("SensorInfo:\n  Poll :") + letter(polling) + "\n";
    for (int i = 0; i < kSensors; ++i) {
      const Sensor& sensor = sensors[i];
      text += std::string("  Sensor: ") + kNames[i] + "\n    initialized:" + letter(sensor.known) +
              " active:" + letter(sensor.active) + ", data:" + std::to_string(sensor.data) + "\n";
      for (const Owed& client : sensor.clients) {
        text += "    client id:" + std::to_string(client.id) +
                " need_to_update:" + letter(client.owed) + "\n";
      }
    }
    return text;
  }

 private:
  bool Has(int sensor, int id) const {
    const auto& clients = sensors[sensor].clients;
    return std::any_of(clients.begin(), clients.end(),
                       [&](const Owed& client) { return client.id == id; });
  }

  bool Connect() {
    if (connected) return true;
    if (!phone_.running) {
      if (reconnect.running()) {
        reconnect.Start();
      } else {
        reconnect_wanted_ = true;
      }
      return false;
    }
    connected = Next(phone_.manager) == kWorks && Next(phone_.queue) == kWorks;
    return connected;
  }

  int Enable(int sensor) {
    if (!Connect()) {
      if (std::find(waiting.begin(), waiting.end(), sensor) == waiting.end()) {
        waiting.push_back(sensor);
      }
      return 0;
    }
    Sensor& state = sensors[sensor];
    if (!state.known) {
      state.known = true;
      state.exists = Next(phone_.sensor) == kWorks && phone_.has[sensor];
    }
    if (!state.exists) return -ENOSYS;
    if (state.active) return -EINVAL;
    const int result = Next(phone_.enable);
    if (result < 0) return result;
    state.active = true;
    polling = true;
    if (phone_.latest[sensor]) reported.push_back(sensor);
    return 0;
  }

  int Disable(int sensor) {
    if (std::erase(waiting, sensor) != 0) return 0;
    Sensor& state = sensors[sensor];
    if (!state.exists) return -ENOSYS;
    if (!state.active) return -EINVAL;
    const int result = Next(phone_.disable);
    if (result < 0) return result;
    state.active = false;
    polling = sensors[1 - sensor].active;
    return 0;
  }

  bool Reconnect() {
    if (waiting.empty()) return true;
    if (!Connect()) return false;
    for (const int sensor : std::exchange(waiting, {})) static_cast<void>(Enable(sensor));
    return true;
  }

  void StartDispatch() {
    if (held) {
      again_ = true;
    } else {
      Dispatch();
    }
  }

  // The latest readings to all that are owed one; of a sensor that is off they are dropped.
  void Dispatch() {
    std::vector<Call> due;
    for (int i = 0; i < kSensors; ++i) {
      for (Owed& client : sensors[i].clients) {
        if (std::exchange(client.owed, false) && sensors[i].active) {
          due.emplace_back(i * 10 + client.id, sensors[i].data);
        }
      }
    }
    if (hold && !due.empty()) {
      hold = false;
      held = true;
      rest_.assign(due.begin() + 1, due.end());
      due.resize(1);
    }
    calls.insert(calls.end(), due.begin(), due.end());
  }

  Phone& phone_;
  bool reconnect_wanted_ = false;
  std::vector<Call> rest_;
  bool again_ = false;
};

// A handle with its model and its clients.
struct Subject {
  Subject(const RandomRun& run, Phone& phone) : calls(run), model(phone) {
    for (int sensor = 0; sensor < kSensors; ++sensor) {
      for (int id = 0; id <= kSpare; ++id) {
        clients[sensor][id] = {.calls = &calls, .number = sensor * 10 + id};
      }
    }
  }

  void* handle = nullptr;
  Calls calls;
  std::array<std::array<Client, kIds + 1>, kSensors> clients;
  SensorModel model;
};

class SensorFamily : public Family {
 public:
  explicit SensorFamily(RandomRun& run) : run_(run) {
    while (ALooper_pollOnce(0, nullptr, nullptr, nullptr) != ALOOPER_POLL_TIMEOUT) continue;
    for (int i = 0; i < kHandles; ++i) Begin(i);
  }

  ~SensorFamily() override { ClearScripts(); }

  void Step(Choices& choices) override {
    const int handle = choices.Pick(kHandles);
    switch (choices.Pick(16)) {
      case 0:
      case 1:
      case 2:
      case 3:
        Register(handle, choices);
        break;
      case 4:
      case 5:
        Deregister(handle, choices);
        break;
      case 6:
      case 7:
      case 8:
        Report(choices);
        break;
      case 9:
        StartService(choices);
        break;
      case 10:
      case 11:
        Hold(handle);
        break;
      case 12:
        Tick(choices);
        break;
      case 13:
        AddFaults(choices);
        return;  // faults wait for the step after this one
      case 14:
        Burst(handle, choices);
        break;
      default:
        Refusals(handle, choices);
        break;
    }
    if (choices.OneIn(64)) {
      End(handle, /*busy=*/false);
      Begin(handle);
    }
    ClearScripts();
  }

  void Finish() override {
    for (int i = 0; i < kHandles; ++i) End(i, /*busy=*/true);
    run_.Settle();
    Note("the end");
    if (phone_.running) {
      run_.Expect(static_cast<int>(hub_.queue_count()), 0, "queues that are left");
    }
  }

 private:
  void Note(std::string line) { run_.Note(std::move(line)); }
  Subject& at(int handle) { return *subjects_[handle]; }

  void Begin(int handle) {
    Note("InitSensorInfo " + std::to_string(handle));
    // Those of handles that are gone stay, to hear what they should not.
    all_.push_back(std::make_unique<Subject>(run_, phone_));
    subjects_[handle] = all_.back().get();
    InitSensorInfo(&at(handle).handle);
    Compare();
  }

  void End(int handle, bool busy) {
    Subject& subject = at(handle);
    Release(handle);
    Note("DeinitSensorInfo " + std::to_string(handle) + (busy ? ", while sensors report" : ""));
    std::thread reports;
    if (busy) {
      reports = std::thread([this] {
        for (int i = 0; i < 5; ++i) hub_.Report(kTypes[0], 1000.0F + static_cast<float>(i));
      });
    }
    DeinitSensorInfo(&subject.handle);
    subject.calls.Close();
    if (busy) reports.join();
    run_.Settle();
    if (subject.handle != nullptr) run_.Fail("the handle is not null after DeinitSensorInfo");
    // The other one hears of it, too: what, is looked at elsewhere.
    if (busy) {
      if (phone_.has[0]) phone_.latest[0] = 1004.0F;
      for (Subject* other : subjects_) other->calls.Take();
    }
  }

  void Compare(bool any_order = false) {
    run_.Settle();
    size_t queues = 0;
    std::array<int, kSensors> listeners = {};
    size_t pausing = 0;
    for (int i = 0; i < kHandles; ++i) {
      if (subjects_[i] == nullptr || at(i).handle == nullptr) continue;
      Subject& subject = at(i);
      SensorModel& model = subject.model;
      const std::string name = " of handle " + std::to_string(i);
      std::vector<Call> seen = subject.calls.Take();
      std::vector<Call> expected = std::exchange(model.calls, {});
      if (any_order) {
        std::sort(seen.begin(), seen.end());
        std::sort(expected.begin(), expected.end());
      }
      run_.Expect(seen, expected, "calls" + name);
      run_.Expect(TextOf(DumpSensorInfo, subject.handle), model.Dump(), "dump" + name);
      queues += model.connected ? 1 : 0;
      for (int s = 0; s < kSensors; ++s) listeners[s] += model.sensors[s].active ? 1 : 0;
      pausing += model.reconnect.pausing() ? 1 : 0;
    }
    run_.Expect(static_cast<int>(PausingWorkers()), static_cast<int>(pausing),
                "workers that pause");
    if (!phone_.running) return;
    run_.Expect(static_cast<int>(hub_.queue_count()), static_cast<int>(queues), "queues");
    for (int s = 0; s < kSensors; ++s) {
      run_.Expect(hub_.listeners(kTypes[s]), listeners[s], "listeners");
    }
  }

  // While it lives, no report arrives: a sensor that is enabled reports at once, and whether that
  // comes before or after the client's first call is a matter of luck.
  void CompareThenDeliver(std::unique_ptr<fake::HoldDeliveries>& held) {
    Compare();
    held.reset();
    for (Subject* subject : subjects_) subject->model.DeliverReported();
    // Those of two sensors may be told together, and then in the order of the sensors.
    Compare(/*any_order=*/true);
  }

  static std::unique_ptr<fake::HoldDeliveries> HoldReports() {
    return std::make_unique<fake::HoldDeliveries>(fake::Delivery::kOneway);
  }

  void Register(int handle, Choices& choices) {
    Subject& subject = at(handle);
    const int sensor = choices.Pick(kSensors);
    const int id = choices.Pick(kIds);
    Note("register " + std::to_string(handle) + ":" + std::to_string(sensor * 10 + id));
    const int expected = subject.model.Register(sensor, id);
    auto held = HoldReports();
    run_.Expect(kRegister[sensor](subject.handle, id, OnReading, &subject.clients[sensor][id]),
                expected, "result");
    CompareThenDeliver(held);
  }

  void Deregister(int handle, Choices& choices) {
    if (choices.OneIn(6)) {
      for (int sensor = 0; sensor < kSensors; ++sensor) {
        for (int id = 0; id < kIds; ++id) Deregister(handle, sensor, id);
      }
      return;
    }
    const int sensor = choices.Pick(kSensors);
    Deregister(handle, sensor, choices.Pick(kIds));
  }

  void Deregister(int handle, int sensor, int id) {
    Subject& subject = at(handle);
    Note("deregister " + std::to_string(handle) + ":" + std::to_string(sensor * 10 + id));
    const int expected = subject.model.Deregister(sensor, id);
    run_.Expect(kDeregister[sensor](subject.handle, id), expected, "result");
    Compare();
  }

  void Refusals(int handle, Choices& choices) {
    Subject& subject = at(handle);
    const int sensor = choices.Pick(kSensors);
    Note("null arguments");
    Client* const cookie = subject.clients[sensor].data();
    run_.Expect(kRegister[sensor](nullptr, 1, OnReading, cookie), -EINVAL, "no handle");
    run_.Expect(kRegister[sensor](subject.handle, 1, nullptr, cookie), -EINVAL, "no callback");
    run_.Expect(kRegister[sensor](subject.handle, 1, OnReading, nullptr), -EINVAL, "no cookie");
    run_.Expect(kDeregister[sensor](nullptr, 1), -EINVAL, "no handle");
    void* none = nullptr;
    DeinitSensorInfo(&none);
    DeinitSensorInfo(nullptr);
    InitSensorInfo(nullptr);
    DumpSensorInfo(nullptr, 1);
    Compare();
  }

  // One delivery with readings of one sensor, or of both; perhaps several for one of them.
  void Report(Choices& choices) {
    constexpr std::array kValues = {0.0F,    4.9F,   -0.5F,
                                    7.99F,   179.6F, -3.0F,
                                    3.0e10F, -3e10F, std::numeric_limits<float>::quiet_NaN()};
    const int count = 1 + choices.Pick(3);
    std::vector<services::SensorReading> readings;
    std::vector<int> which;
    std::string text = "reported:";
    for (int i = 0; i < count; ++i) {
      const int sensor = choices.Pick(kSensors);
      const float value = kValues[choices.Pick(kValues.size())];
      readings.push_back({.type = kTypes[sensor], .value = value});
      which.push_back(sensor);
      text += std::string(" ") + kNames[sensor] + "=" + std::to_string(value);
      if (phone_.has[sensor] || !phone_.running) phone_.latest[sensor] = value;
    }
    Note(text);
    for (int i = 0; i < kHandles; ++i) at(i).model.Report(which);
    hub_.Report(readings);
    Compare();
    if (!choices.OneIn(8)) return;
    Note("an event of an unknown kind");
    ASensorEvent event = {};
    event.version = sizeof event;
    event.type = 77;
    hub_.SendUnasked({event});
    Compare();
  }

  void StartService(Choices& choices) {
    if (phone_.running) return;
    for (int s = 0; s < kSensors; ++s) {
      phone_.has[s] = !choices.OneIn(4);
      if (phone_.has[s]) {
        hub_.Add(kTypes[s], kNames[s], 20'000);
      } else {
        phone_.latest[s].reset();
      }
    }
    Note("the service comes up");
    phone_.running = true;
    hub_.Start();
    Compare();
  }

  void Hold(int handle) {
    Subject& subject = at(handle);
    if (subject.model.held) {
      Release(handle);
    } else {
      Note("the next call of " + std::to_string(handle) + " takes long");
      subject.model.hold = true;
      subject.calls.Hold();
    }
    Compare();
  }

  void Release(int handle) {
    Note("the long call of " + std::to_string(handle) + " returns");
    at(handle).model.Release();
    at(handle).calls.Release();
  }

  void Tick(Choices& choices) {
    // Now and then as often as it takes to see a worker give up.
    const int times = choices.OneIn(4) ? 12 : 1;
    for (int i = 0; i < times; ++i) TickOnce();
  }

  void TickOnce() {
    // Two workers at once would share the faults by luck.
    if (at(0).model.reconnect.pausing() && at(1).model.reconnect.pausing()) ClearScripts();
    for (int i = 0; i < kHandles; ++i) {
      // Which of two sensors' clients would be the next is a matter of luck.
      if (!at(i).model.held) Release(i);
    }
    Note("the pauses are over");
    auto held = HoldReports();
    for (Subject* subject : subjects_) subject->model.reconnect.Tick();
    EndPauses();
    CompareThenDeliver(held);
  }

  void AddFaults(Choices& choices) {
    const int count = 1 + choices.Pick(3);
    for (int i = 0; i < count; ++i) {
      const auto add = [this](const char* name, SensorFunction function, Script& script) {
        Note(std::string(name) + " fails");
        script.push_back(-5);
        hub_.on(function).Then({.status = -5});
      };
      switch (choices.Pick(5)) {
        case 0:
          add("getInstance", SensorFunction::kGetInstance, phone_.manager);
          break;
        case 1:
          add("createEventQueue", SensorFunction::kCreateEventQueue, phone_.queue);
          break;
        case 2:
          add("getDefaultSensor", SensorFunction::kGetDefaultSensor, phone_.sensor);
          break;
        case 3:
          add("registerSensor", SensorFunction::kRegisterSensor, phone_.enable);
          break;
        default:
          add("disableSensor", SensorFunction::kDisableSensor, phone_.disable);
          break;
      }
    }
  }

  void ClearScripts() {
    for (Script* script :
         {&phone_.manager, &phone_.queue, &phone_.sensor, &phone_.enable, &phone_.disable}) {
      script->clear();
    }
    for (const SensorFunction function :
         {SensorFunction::kGetInstance, SensorFunction::kCreateEventQueue,
          SensorFunction::kGetDefaultSensor, SensorFunction::kRegisterSensor,
          SensorFunction::kDisableSensor}) {
      hub_.on(function).Clear();
    }
  }

  // Readings, a client that comes and goes, and dumps, all at once. Everybody hears readings in
  // their order, and the last one last.
  void Burst(int handle, Choices& choices) {
    Subject& subject = at(handle);
    const int sensor = choices.Pick(kSensors);
    if (!subject.model.sensors[sensor].active || subject.model.sensors[sensor].clients.empty()) {
      return;
    }
    for (Subject* each : subjects_) {
      if (each->model.held || each->model.hold) return;
    }
    ClearScripts();
    const int count = 1 + choices.Pick(30);
    const int first = burst_value_ + 1;
    burst_value_ += count;
    Note("a burst of " + std::to_string(count) + " readings of " + kNames[sensor]);
    std::thread reports([&] {
      for (int i = 0; i < count; ++i) hub_.Report(kTypes[sensor], static_cast<float>(first + i));
    });
    for (int i = 0; i < count; ++i) {
      run_.Expect(
          kRegister[sensor](subject.handle, kSpare, OnReading, &subject.clients[sensor][kSpare]), 0,
          "register");
      TextOf(DumpSensorInfo, subject.handle);
      run_.Expect(kDeregister[sensor](subject.handle, kSpare), 0, "deregister");
    }
    reports.join();
    run_.Settle();
    phone_.latest[sensor] = static_cast<float>(burst_value_);
    for (Subject* each : subjects_) {
      const int before = each->model.sensors[sensor].data;
      std::array<int, kIds + 1> latest = {};
      latest.fill(before);
      for (const auto& [client, value] : each->calls.Take()) {
        if (client / 10 != sensor) run_.Fail("another sensor's client is called");
        int& last = latest[client % 10];
        const bool was = value == before || (value >= first && value <= burst_value_);
        if (!was) run_.Fail("a reading that never was: " + std::to_string(value));
        if (value < last && last != before) run_.Fail("an old reading: " + std::to_string(value));
        last = value;
      }
      each->model.Report({sensor});
      if (each->model.sensors[sensor].active) {
        for (const auto& client : each->model.sensors[sensor].clients) {
          run_.Expect(latest[client.id], burst_value_, "the last reading");
        }
      }
      each->model.calls.clear();  // they have been heard in the burst
    }
    Compare();
  }

  RandomRun& run_;
  simulated::SensorHub hub_;
  Phone phone_;
  std::vector<std::unique_ptr<Subject>> all_;
  std::array<Subject*, kHandles> subjects_ = {};
  int burst_value_ = 10'000;
};

}  // namespace

std::unique_ptr<Family> MakeSensor(RandomRun& run) {
  return std::make_unique<SensorFamily>(run);
}

}  // namespace norvik::qel::random_test
