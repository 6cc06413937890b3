// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// From a dispatch to the calls of all clients, compared with a loop over the same callbacks. The
// measuring thread calls the dispatch itself, on prepared state. The workers that normally do so
// have ended or are blocked.
#include <android/sensor.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "battery/battery_info.h"
#include "benchmarks.h"
#include "platform.h"
#include "quorvel/fake/gate.h"
#include "quorvel/fake/sensor_functions.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"
#include "sensor/sensor_info.h"
#include "thermal/audio_thermal_callback.h"
#include "threads.h"
#include "turns.h"
#include "waiting.h"

namespace norvik::qel::bench {

namespace {

constexpr size_t kMostClients = 1000;

using Callback = void (*)(int value, void* cookie);

struct Client {
  Callback callback;
  int64_t* turn;  // the cookie
};

int64_t turns_taken = 0;

// The body of every client: it records the index under which it was called.
void TakeTurn(int /*value*/, void* cookie) {
  *static_cast<int64_t*>(cookie) = ++turns_taken;
}

// A battery client is identified by its function, so each needs its own.
template <size_t kIndex>
void BatteryClient(int value, void* cookie) {
  TakeTurn(value, cookie);
}

template <size_t... kIndices>
constexpr std::array<Callback, sizeof...(kIndices)> BatteryClients(
    std::index_sequence<kIndices...> /*indices*/) {
  return {BatteryClient<kIndices>...};
}

// The families follow. CallbackOf() returns a client's function. The constructor registers clients
// and leaves no worker that would call them. Owe() prepares state so that Dispatch() calls all of
// them. The library keeps the clients after its worker has ended. If it did not, the clients would
// not be called and the benchmark would fail.

class BatteryDispatch {
 public:
  static Callback CallbackOf(size_t index) {
    static constexpr auto kCallbacks = BatteryClients(std::make_index_sequence<kMostClients>());
    return kCallbacks[index];
  }

  explicit BatteryDispatch(const std::vector<Client>& clients) {
    health_.Start();
    Must(battery_.Initialize());
    for (const Client& client : clients) {
      Must(battery_.RegisterInfoCallback(audio::BatteryInfo::kBatteryLevel, client.callback,
                                         client.turn) == 0);
    }
    // Ends the threads and the reports; the clients stay registered.
    battery_.Deinitialize();
  }

  // Called without the lock, because no other thread is left.
  void Owe() { battery_.UpdateProperty(audio::BatteryInfo::kBatteryLevel, level_ ^= 1); }
  void Dispatch() { battery_.CallbackToClients(); }

 private:
  simulated::Health health_;
  audio::BatteryInfo battery_;
  int level_ = 50;
};

// The worker is blocked inside a client that has been deregistered meanwhile. Further requests then
// only set a flag.
class SensorDispatch {
 public:
  static Callback CallbackOf(size_t /*index*/) { return TakeTurn; }

  explicit SensorDispatch(const std::vector<Client>& clients) {
    constexpr auto kProximity = audio::SensorInfo::PROXIMITY;
    DrainLooper();
    hub_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    hub_.Start();
    Must(sensor_.Initialize());
    const int64_t polls = PollsBegun();
    Must(sensor_.RegisterCallback(
             kProximity,
             {.need_to_update = true, .id = -1, .callback = PassGate, .cookie = &gate_}) == 0);
    Must(gate_.WaitForArrivals());
    int id = 0;
    for (const Client& client : clients) {
      Must(sensor_.RegisterCallback(kProximity, {.need_to_update = false,
                                                 .id = id++,
                                                 .callback = client.callback,
                                                 .cookie = client.turn}) == 0);
    }
    Must(sensor_.DeregisterCallback(kProximity, -1) == 0);
    WaitForPollAfter(polls);
  }
  ~SensorDispatch() {
    gate_.Open();
    sensor_.Deinitialize();
  }

  void Owe() {
    const int64_t polls = PollsBegun();
    fake::BringSensorEvents(reading_);
    WaitForPollAfter(polls);
  }
  void Dispatch() { sensor_.DispatchToClient(); }

 private:
  static void PassGate(int /*value*/, void* cookie) { static_cast<fake::Gate*>(cookie)->Pass(); }

  // If there is none after ten seconds, the clients are not called either, and the benchmark fails.
  static void WaitForPollAfter(int64_t polls) {
    static_cast<void>(Eventually([=] { return PollsBegun() != polls; }));
  }

  const std::vector<ASensorEvent> reading_ = Reading(ASENSOR_TYPE_PROXIMITY, 5);
  simulated::SensorHub hub_;
  fake::Gate gate_;
  audio::SensorInfo sensor_;
};

// All clients are registered for the temperature in record_.
class ThermalDispatch {
 public:
  static Callback CallbackOf(size_t /*index*/) { return TakeTurn; }

  explicit ThermalDispatch(const std::vector<Client>& clients) {
    phone_.Start(simulated::ThermalPath::kAidl);
    service_ = LookUpThermal();
    Must(thermal_.Initialize(service_));
    int id = 0;
    for (const Client& client : clients) {
      Must(thermal_.AddClientCallback(
               id++,
               {.callback = client.callback, .temperature_name = "skin", .cookie = client.turn},
               service_) == 0);
    }
    thermal_.StopCallbackThread();  // and the clients stay
  }
  ~ThermalDispatch() { thermal_.Deinitialize(service_); }

  void Owe() { thermal_.UpdateTemperature(record_); }
  void Dispatch() { thermal_.DispatchToClient(); }

 private:
  using Hidl = audio::AudioThermalCallback::Temperature;

  simulated::Thermal phone_;
  android::sp<aidl::android::hardware::thermal::ThermalHidlWrapper> service_;
  audio::AudioThermalCallback thermal_{audio::AudioThermalCallback::TemperatureType::SKIN};
  const Hidl record_ = {
      .type = audio::AudioThermalCallback::TemperatureType::SKIN,
      .name = "skin",
      .value = 45,
      .throttlingStatus = android::hardware::thermal::V2_0::ThrottlingSeverity::SEVERE};
};

// The duration of `action` without the time to read the clock, which is half of the total for one
// client. That time is measured in each round, after one read that warms the cache.
template <typename Action>
int64_t TimeOf(Action action) {
  static_cast<void>(NowNs());
  const int64_t empty_ns = NowNs();
  const int64_t began_ns = NowNs();
  action();
  const int64_t ended_ns = NowNs();
  return (ended_ns - began_ns) - (began_ns - empty_ns);
}

// Whether every client was called once since `before`.
bool EachTookATurn(const std::vector<Client>& clients, int64_t before) {
  const auto took = [=](const Client& client) { return *client.turn > before; };
  return turns_taken - before == static_cast<int64_t>(clients.size()) &&
         std::all_of(clients.begin(), clients.end(), took);
}

constexpr char kNotEachOnce[] = "a dispatch did not call each client once";

// Alternates between the library's dispatch and the loop, because the time of a call through a
// pointer varies several-fold over time on some machines. Owe() comes before each, so that both
// find the same caches: the loop would profit from a dispatch just before it.
template <typename Family>
void ToClients(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  std::vector<int64_t> cookies(count);
  std::vector<Client> clients;
  for (size_t i = 0; i < count; ++i) {
    clients.push_back({.callback = Family::CallbackOf(i), .turn = &cookies[i]});
  }
  // All on one processor, so that prepared data need not come from another processor's cache.
  const WorkersAreMadeHere here;
  Family family(clients);
  family.Dispatch();  // makes the calls that the registrations left pending

  const int64_t before = turns_taken;
  family.Owe();
  family.Dispatch();
  if (!EachTookATurn(clients, before)) return state.SkipWithError(kNotEachOnce);
  std::sort(clients.begin(), clients.end(),
            [](const Client& left, const Client& right) { return *left.turn < *right.turn; });

  int64_t allocations = 0;
  Turns turns;
  turns.Add("library", [&]() -> std::optional<int64_t> {
    family.Owe();
    const int64_t taken_before = turns_taken;
    const int64_t allocations_before = AllocationCount();
    const int64_t took_ns = TimeOf([&] { family.Dispatch(); });
    allocations += AllocationCount() - allocations_before;
    return EachTookATurn(clients, taken_before) ? std::optional(took_ns) : std::nullopt;
  });
  turns.Add("loop", [&] {
    family.Owe();
    const int64_t took_ns = TimeOf([&] {
      for (const Client& client : clients) client.callback(1, client.turn);
    });
    family.Dispatch();
    return took_ns;
  });
  if (!turns.Run(state, kNotEachOnce)) return;
  const auto per_client = [&](const char* p50) {
    return state.counters[p50] / static_cast<double>(count);
  };
  state.counters["per_client_ns"] = per_client("library_p50_ns");
  state.counters["loop_per_client_ns"] = per_client("loop_p50_ns");
  state.counters["above_ns"] = per_client("library_p50_ns") - per_client("loop_p50_ns");
  state.counters["allocations"] =
      static_cast<double>(allocations) / static_cast<double>(state.iterations());
}

const Registration kRegistration([] {
  const auto add = [](const char* name, void (*run)(benchmark::State & state)) {
    benchmark::RegisterBenchmark(name, run)
        ->UseManualTime()
        ->ArgName("clients")
        ->RangeMultiplier(10)
        ->Range(1, kMostClients)
        ->Iterations(Rounds(2'000));
  };
  add("dispatch/battery", ToClients<BatteryDispatch>);
  add("dispatch/sensor", ToClients<SensorDispatch>);
  add("dispatch/thermal", ToClients<ThermalDispatch>);
});

}  // namespace

}  // namespace norvik::qel::bench
