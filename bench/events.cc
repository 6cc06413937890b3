// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// From the platform's notification to the client's call. The requesting thread acts as the binder
// thread that delivers it. A woken thread runs on another processor than the one that wakes it.
#include <android/sensor.h>
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "battery/audio_health_info_callback.h"
#include "battery/battery_info.h"
#include "benchmarks.h"
#include "platform.h"
#include "quorvel.h"
#include "quorvel/fake/sensor_functions.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"
#include "thermal/audio_thermal_callback.h"
#include "thermal/audio_thermal_changed_callback.h"
#include "threads.h"
#include "turns.h"
#include "workers.h"

namespace norvik::qel::bench {

namespace {

void ClientCallback(int /*value*/, void* cookie) {
  static_cast<Probe*>(cookie)->Run();
}

// Triggers a call of the client and waits for it, so that no call is pending afterwards.
template <typename Action>
void DoAndHear(Probe& probe, Action action) {
  const int64_t number = probe.Announce();
  action();
  // A client that is not called here is not called later either, and the rounds report that.
  static_cast<void>(probe.WaitFor(number));
}

// The benchmark calls a callback object of its own, so that no thread of the service uses it.
class BatteryEvent : public Worker {
 public:
  explicit BatteryEvent(Probe& probe) {
    health_.Start();
    report_ = health_.info();
    Must(battery_.Initialize());
    DoAndHear(probe, [&] {
      Must(battery_.RegisterInfoCallback(audio::BatteryInfo::kBatteryLevel, ClientCallback,
                                         &probe) == 0);
    });
    callback_->SetBatteryInfo(&battery_);
  }
  ~BatteryEvent() override {
    callback_->SetBatteryInfo(nullptr);
    battery_.Deinitialize();
  }

  void Trigger() override {
    report_.batteryLevel ^= 1;  // only a change calls the client
    callback_->healthInfoChanged(report_);
  }

 private:
  simulated::Health health_;
  simulated::Health::HealthInfo report_;
  audio::BatteryInfo battery_;
  const std::shared_ptr<audio::AudioHealthInfoCallback> callback_ =
      ndk::SharedRefBase::make<audio::AudioHealthInfoCallback>();
};

// Like BatteryEvent, with a callback object of its own.
class ThermalEvent : public Worker {
 public:
  explicit ThermalEvent(Probe& probe) {
    phone_.Start(simulated::ThermalPath::kAidl);
    service_ = LookUpThermal();
    Must(thermal_.Initialize(service_));
    DoAndHear(probe, [&] {
      Must(thermal_.AddClientCallback(
               /*id=*/1, {.callback = ClientCallback, .temperature_name = "skin", .cookie = &probe},
               service_) == 0);
    });
    callback_->SetAudioThermalCallback(&thermal_);
  }
  ~ThermalEvent() override {
    callback_->SetAudioThermalCallback(nullptr);
    thermal_.Deinitialize(service_);
    thermal_.StopCallbackThread();
  }

 protected:
  const android::sp<audio::AudioThermalChangedCallback>& callback() const { return callback_; }

 private:
  simulated::Thermal phone_;
  android::sp<aidl::android::hardware::thermal::ThermalHidlWrapper> service_;
  audio::AudioThermalCallback thermal_{audio::AudioThermalCallback::TemperatureType::SKIN};
  const android::sp<audio::AudioThermalChangedCallback> callback_ =
      android::sp<audio::AudioThermalChangedCallback>::make();
};

class HidlThermalEvent : public ThermalEvent {
 public:
  using ThermalEvent::ThermalEvent;
  void Trigger() override { static_cast<void>(callback()->notifyThrottling(record_).isOk()); }

 private:
  const android::hardware::thermal::V2_0::Temperature record_ = {
      .type = android::hardware::thermal::V2_0::TemperatureType::SKIN,
      .name = "skin",
      .value = 45,
      .throttlingStatus = android::hardware::thermal::V2_0::ThrottlingSeverity::SEVERE};
};

class AidlThermalEvent : public ThermalEvent {
 public:
  using ThermalEvent::ThermalEvent;
  void Trigger() override { wrapper_->notifyThrottling(record_); }

 private:
  using Wrapper =
      aidl::android::hardware::thermal::ThermalHidlWrapper::IThermalChangedCallbackWrapper;
  const std::shared_ptr<Wrapper> wrapper_ = ndk::SharedRefBase::make<Wrapper>(callback());
  const aidl::android::hardware::thermal::Temperature record_ = {
      .type = aidl::android::hardware::thermal::TemperatureType::SKIN,
      .name = "skin",
      .value = 45,
      .throttlingStatus = aidl::android::hardware::thermal::ThrottlingSeverity::SEVERE};
};

// The reading goes from the requesting thread to the poll thread, then to the callback thread.
class SensorEvent : public Worker {
 public:
  explicit SensorEvent(Probe& probe) {
    DrainLooper();
    hub_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    hub_.Start();
    InitSensorInfo(&handle_);
    DoAndHear(probe,
              [&] { RegisterProximitySensorCallback(handle_, /*id=*/1, ClientCallback, &probe); });
    if (!PinThread("sensor_callback", Cpu::kCaller)) throw std::logic_error("no callback thread");
  }
  ~SensorEvent() override { DeinitSensorInfo(&handle_); }

  void Trigger() override { fake::BringSensorEvents(reading_); }

 private:
  const std::vector<ASensorEvent> reading_ = Reading(ASENSOR_TYPE_PROXIMITY, 5);
  simulated::SensorHub hub_;
  void* handle_ = nullptr;
};

template <typename Event>
std::unique_ptr<Worker> Make(Probe& probe) {
  return std::make_unique<Event>(probe);
}

std::unique_ptr<Worker> MakeTwoBarePairs(Probe& probe) {
  PinThisThread(Cpu::kCaller);
  std::unique_ptr<Worker> second = MakeBareWorker(probe);
  PinThisThread(Cpu::kWorker);
  return MakeBareRelay(std::move(second));
}

// Creates all threads on the requesting thread's processor.
template <MakeWorker kMake>
std::unique_ptr<Worker> OnOneProcessor(Probe& probe) {
  PinThisThread(Cpu::kCaller);
  return kMake(probe);
}

std::unique_ptr<Worker> MakeTwoBarePairsHere(Probe& probe) {
  return MakeBareRelay(MakeBareWorker(probe));
}

struct Row {
  const char* name;
  MakeWorker make;
  MakeWorker baseline = MakeBareWorker;
  // When the event occurred, if that is later than the request.
  int64_t (*event_ns)() = nullptr;
};

void FromEventToClient(benchmark::State& state, const Row& row) {
  Probe client(Probe::Asker::kSleeps);
  Probe action(Probe::Asker::kSleeps);
  std::unique_ptr<Worker> event;
  std::unique_ptr<Worker> baseline;
  {
    const WorkersAreMadeHere here;
    event = row.make(client);
    baseline = row.baseline(action);
  }
  Turns turns;
  const auto let_all_sleep = [] { std::this_thread::sleep_for(std::chrono::microseconds(100)); };
  turns.Add("library", [&] {
    let_all_sleep();
    return FromRequestToAction(*event, client, row.event_ns);
  });
  turns.Add("bare", [&] {
    let_all_sleep();
    return FromRequestToAction(*baseline, action);
  });
  turns.Run(state, kNothingRan);
}

// Ten sensor handles. Only one has a client for the sensor that reports. Counter context_switches:
// the context switches of all threads of the program per event.
void ManyHandles(benchmark::State& state) {
  constexpr size_t kHandles = 10;
  DrainLooper();
  simulated::SensorHub hub;
  hub.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
  hub.Add(ASENSOR_TYPE_HINGE_ANGLE, "hinge angle");
  hub.Start();
  Probe others(Probe::Asker::kSleeps);
  Probe client(Probe::Asker::kSleeps);
  std::array<void*, kHandles> handles = {};
  for (void*& handle : handles) {
    InitSensorInfo(&handle);
    if (&handle == &handles.front()) {
      DoAndHear(client,
                [&] { RegisterHingeAngleSensorCallback(handle, 1, ClientCallback, &client); });
    } else {
      DoAndHear(others,
                [&] { RegisterProximitySensorCallback(handle, 1, ClientCallback, &others); });
    }
  }
  const auto switches = [] {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw + usage.ru_nivcsw;
  };
  int64_t sum = 0;
  for ([[maybe_unused]] auto round : state) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const int64_t number = client.Announce();
    const int64_t before = switches();
    const int64_t asked_ns = NowNs();
    hub.Report(ASENSOR_TYPE_HINGE_ANGLE, 90);
    const auto called_ns = client.WaitFor(number);
    if (!called_ns) {
      state.SkipWithError(kNothingRan);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));  // for the other handles
    sum += switches() - before;
    state.SetIterationTime(static_cast<double>(*called_ns - asked_ns) * 1e-9);
  }
  state.counters["context_switches"] =
      static_cast<double>(sum) / static_cast<double>(state.iterations());
  for (void*& handle : handles) DeinitSensorInfo(&handle);
}

const Registration kRegistration([] {
  benchmark::RegisterBenchmark("event/ten-sensor-handles", ManyHandles)
      ->UseManualTime()
      ->Iterations(Rounds(500));
  for (const Row& row : {
           Row{"event/battery", Make<BatteryEvent>},
           Row{"event/thermal-aidl", Make<AidlThermalEvent>},
           Row{"event/thermal-hidl", Make<HidlThermalEvent>},
           Row{"event/sensor", Make<SensorEvent>, MakeBareWorker, LastPollReturnNs},
           Row{"event/sensor-push", Make<SensorEvent>, MakeTwoBarePairs},
           Row{"event/battery-one-processor", OnOneProcessor<Make<BatteryEvent>>,
               OnOneProcessor<MakeBareWorker>},
           Row{"event/sensor-one-processor", OnOneProcessor<Make<SensorEvent>>,
               OnOneProcessor<MakeTwoBarePairsHere>},
       }) {
    benchmark::RegisterBenchmark(row.name, FromEventToClient, row)
        ->UseManualTime()
        ->Iterations(Rounds(5'000));
  }
});

}  // namespace

}  // namespace norvik::qel::bench
