// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The library's activity while nothing happens.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <thread>

#include "benchmarks.h"
#include "quorvel.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"
#include "threads.h"
#include "turns.h"
#include "waiting.h"

namespace norvik::qel::bench {

namespace {

constexpr size_t kClients = 7;  // four of the battery, two of sensors, one of a temperature
constexpr int kThreads = 8;     // two, three and two per handle, and one for the temperature type

// The cookie tells whether the client has been called.
void Callback(int /*value*/, void* cookie) {
  *static_cast<std::atomic<bool>*>(cookie) = true;
}

// One handle of each family, with clients for all properties, both sensors and one temperature.
class Handles {
 public:
  Handles() {
    InitBatteryInfo(&battery_);
    InitSensorInfo(&sensor_);
    InitThermalInfo(&thermal_);
  }
  ~Handles() {
    DeinitThermalInfo(&thermal_);
    DeinitSensorInfo(&sensor_);
    DeinitBatteryInfo(&battery_);
  }
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;

  // Whether every client was registered and called.
  bool CallAll() {
    std::atomic<bool>* called = called_.data();
    bool registered = true;
    for (const auto add :
         {RegisterBatteryLevelCallback, RegisterBatteryCycleCountCallback,
          RegisterWirelessChargerIsOnlineCallback, RegisterDockChargerIsOnlineCallback}) {
      registered &= add(battery_, Callback, called++) == 0;
    }
    for (const auto add : {RegisterProximitySensorCallback, RegisterHingeAngleSensorCallback}) {
      registered &= add(sensor_, /*id=*/1, Callback, called++) == 0;
    }
    const ThermalCallbackParam param = {
        .id = 1, .type_name = "SKIN", .temperature_name = "skin", .callback = Callback};
    registered &= RegisterThermalCallback(thermal_, &param, called) == 0;
    return registered &&
           Eventually([this] { return std::all_of(called_.begin(), called_.end(), IsSet); });
  }

 private:
  static bool IsSet(const std::atomic<bool>& flag) { return flag; }

  std::array<std::atomic<bool>, kClients> called_ = {};
  void* battery_ = nullptr;
  void* sensor_ = nullptr;
  void* thermal_ = nullptr;
};

// Counters: the context switches of all threads of the library in that time, and their number.
void Idle(benchmark::State& state) {
  simulated::Health health;
  health.Start();
  simulated::SensorHub sensors;
  sensors.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
  sensors.Add(ASENSOR_TYPE_HINGE_ANGLE, "hinge angle");
  sensors.Start();
  simulated::Thermal thermal;
  thermal.Start(simulated::ThermalPath::kAidl);
  Handles handles;
  for ([[maybe_unused]] auto round : state) {
    if (!handles.CallAll()) return state.SkipWithError("a client was not called");
    if (!LibraryThreadsSettle(kThreads)) {
      return state.SkipWithError("unexpected number of threads, or they do not fall asleep");
    }
    const ContextSwitches before = LibraryContextSwitches();
    const int64_t began_ns = NowNs();
    // The idle time.
    std::this_thread::sleep_for(std::chrono::seconds(IsQuick() ? 1 : 60));
    const int64_t took_ns = NowNs() - began_ns;
    const ContextSwitches after = LibraryContextSwitches();
    int64_t sum = 0;
    for (const auto& [thread, switches] : before) {
      const auto found = after.find(thread);
      if (found == after.end()) return state.SkipWithError("a thread has ended");
      sum += found->second - switches;
    }
    state.SetIterationTime(static_cast<double>(took_ns) * 1e-9);
    state.counters["context_switches"] = static_cast<double>(sum);
    state.counters["threads"] = static_cast<double>(after.size());
  }
}

const Registration kRegistration([] {
  benchmark::RegisterBenchmark("idle/all-families", Idle)
      ->UseManualTime()
      ->Iterations(1)
      ->Repetitions(1);
});

}  // namespace

}  // namespace norvik::qel::bench
