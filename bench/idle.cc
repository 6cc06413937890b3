// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The library's activity while nothing happens.
#include <benchmark/benchmark.h>

#include <array>
#include <bitset>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "latencies.h"
#include "library_threads.h"
#include "quick.h"
#include "quorvel.h"
#include "quorvel/fake/thread_annotations.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"
#include "registration.h"

namespace norvik::qel::bench {

namespace {

constexpr size_t kClients = 7;  // four of the battery, two of sensors, one of a temperature
constexpr int kThreads = 8;     // two, three and two of the handles, and one for the temperature

// Which clients have been called.
class Calls {
 public:
  void Add(size_t client) {
    std::lock_guard<std::mutex> lock(lock_);
    called_.set(client);
    cv_.notify_one();
  }

  bool WaitForAll() {
    std::unique_lock<std::mutex> lock(lock_);
    return cv_.wait_for(lock, std::chrono::seconds(10),
                        [this]() QUORVEL_REQUIRES(lock_) { return called_.all(); });
  }

 private:
  std::mutex lock_;
  std::condition_variable cv_;
  std::bitset<kClients> called_ QUORVEL_GUARDED_BY(lock_);
};

struct Client {
  Calls* calls;
  size_t number;
  static void Callback(int /*value*/, void* cookie) {
    const Client& client = *static_cast<const Client*>(cookie);
    client.calls->Add(client.number);
  }
};

// A handle of each family, with clients of everything that it offers.
class Handles {
 public:
  Handles() {
    for (size_t i = 0; i < kClients; ++i) clients_[i] = {.calls = &calls_, .number = i};
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
    Client* client = clients_.data();
    bool registered = true;
    for (const auto add :
         {RegisterBatteryLevelCallback, RegisterBatteryCycleCountCallback,
          RegisterWirelessChargerIsOnlineCallback, RegisterDockChargerIsOnlineCallback}) {
      registered &= add(battery_, Client::Callback, client++) == 0;
    }
    for (const auto add : {RegisterProximitySensorCallback, RegisterHingeAngleSensorCallback}) {
      registered &= add(sensor_, /*id=*/1, Client::Callback, client++) == 0;
    }
    const ThermalCallbackParam param = {
        .id = 1, .type_name = "SKIN", .temperature_name = "skin", .callback = Client::Callback};
    registered &= RegisterThermalCallback(thermal_, &param, client) == 0;
    return registered && calls_.WaitForAll();
  }

 private:
  Calls calls_;
  std::array<Client, kClients> clients_;
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
    if (!handles.CallAll()) {
      state.SkipWithError("a client was not called");
      return;
    }
    if (!LibraryThreadsSettle(kThreads)) {
      state.SkipWithError("unexpected number of threads, or they do not fall asleep");
      return;
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
      if (found == after.end()) {
        state.SkipWithError("a thread has ended");
        return;
      }
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
