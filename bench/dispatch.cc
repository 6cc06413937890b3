// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// From a dispatch to the calls of all clients, compared with a loop over the same callbacks. The
// measuring thread calls the dispatch itself, on prepared state. The workers that normally do so
// have ended or are blocked.
#include <android/sensor.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <thread>
#include <utility>
#include <vector>

#include "allocations.h"
#include "battery/battery_info.h"
#include "cpus.h"
#include "latencies.h"
#include "look_up_thermal.h"
#include "must.h"
#include "polls.h"
#include "quick.h"
#include "quorvel/fake/gate.h"
#include "quorvel/fake/sensor_functions.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"
#include "registration.h"
#include "sensor/sensor_info.h"
#include "thermal/audio_thermal_callback.h"

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

// Below, the clients of each family. The constructor registers them and leaves no worker that would
// call them. Owe() makes the family's Dispatch() call all of them. Dispatching after the worker has
// ended relies on the sources, which keep the clients; otherwise the benchmark would fail, because
// the clients would not be called.

class BatteryDispatch {
 public:
  explicit BatteryDispatch(const std::vector<int64_t*>& turns) {
    static constexpr auto kCallbacks = BatteryClients(std::make_index_sequence<kMostClients>());
    health_.Start();
    Must(battery_.Initialize());
    for (size_t i = 0; i < turns.size(); ++i) {
      clients_.push_back({.callback = kCallbacks[i], .turn = turns[i]});
      Must(battery_.RegisterInfoCallback(audio::BatteryInfo::kBatteryLevel, kCallbacks[i],
                                         turns[i]) == 0);
    }
    // Ends only the threads and the reports: the clients stay.
    battery_.Deinitialize();
  }

  const std::vector<Client>& clients() const { return clients_; }
  // Without the lock: no other thread is left.
  void Owe() { battery_.UpdateProperty(audio::BatteryInfo::kBatteryLevel, level_ ^= 1); }
  void Dispatch() { battery_.CallbackToClients(); }

 private:
  std::vector<Client> clients_;
  simulated::Health health_;
  audio::BatteryInfo battery_;
  int level_ = 50;
};

// The worker is blocked inside a client that has been deregistered meanwhile. Further requests then
// only set a flag.
class SensorDispatch {
 public:
  explicit SensorDispatch(const std::vector<int64_t*>& turns) {
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
    for (int id = 0; id < static_cast<int>(turns.size()); ++id) {
      clients_.push_back({.callback = TakeTurn, .turn = turns[static_cast<size_t>(id)]});
      Must(sensor_.RegisterCallback(kProximity, {.need_to_update = false,
                                                 .id = id,
                                                 .callback = TakeTurn,
                                                 .cookie = clients_.back().turn}) == 0);
    }
    Must(sensor_.DeregisterCallback(kProximity, -1) == 0);
    WaitForPollAfter(polls);
  }
  ~SensorDispatch() {
    gate_.Open();
    sensor_.Deinitialize();
  }

  const std::vector<Client>& clients() const { return clients_; }
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
    const int64_t limit = NowNs() + 10'000'000'000;
    while (PollsBegun() == polls && NowNs() < limit) std::this_thread::yield();
  }

  std::vector<Client> clients_;
  const std::vector<ASensorEvent> reading_ = Reading(ASENSOR_TYPE_PROXIMITY, 5);
  simulated::SensorHub hub_;
  fake::Gate gate_;
  audio::SensorInfo sensor_;
};

// All clients listen to one temperature, the one of the record.
class ThermalDispatch {
 public:
  explicit ThermalDispatch(const std::vector<int64_t*>& turns) {
    phone_.Start(simulated::ThermalPath::kAidl);
    service_ = LookUpThermal();
    Must(thermal_.Initialize(service_));
    for (int id = 0; id < static_cast<int>(turns.size()); ++id) {
      clients_.push_back({.callback = TakeTurn, .turn = turns[static_cast<size_t>(id)]});
      Must(thermal_.AddClientCallback(
               id,
               {.callback = TakeTurn, .temperature_name = "skin", .cookie = clients_.back().turn},
               service_) == 0);
    }
    thermal_.StopCallbackThread();  // and the clients stay
  }
  ~ThermalDispatch() { thermal_.Deinitialize(service_); }

  const std::vector<Client>& clients() const { return clients_; }
  void Owe() { thermal_.UpdateTemperature(record_); }
  void Dispatch() { thermal_.DispatchToClient(); }

 private:
  using Hidl = audio::AudioThermalCallback::Temperature;

  std::vector<Client> clients_;
  simulated::Thermal phone_;
  android::sp<aidl::android::hardware::thermal::ThermalHidlWrapper> service_;
  audio::AudioThermalCallback thermal_{audio::AudioThermalCallback::TemperatureType::SKIN};
  const Hidl record_ = {
      .type = audio::AudioThermalCallback::TemperatureType::SKIN,
      .name = "skin",
      .value = 45,
      .throttlingStatus = android::hardware::thermal::V2_0::ThrottlingSeverity::SEVERE};
};

// Without the time of reading the clock, which is half of it for one client. Each round also reads
// the clock around nothing, after one read that brings it into the cache.
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
// pointer varies several-fold over time on some machines. Each comes first in its round, so that
// both find the same caches: the loop would profit from a dispatch just before it.
template <typename Family>
void ToClients(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  std::vector<int64_t> turns(count);
  std::vector<int64_t*> cookies;
  for (int64_t& turn : turns) cookies.push_back(&turn);
  // All on one processor, so that prepared data need not come from another processor's cache.
  const WorkersAreMadeHere here;
  Family family(cookies);
  family.Dispatch();  // whatever the registrations have left

  int64_t before = turns_taken;
  family.Owe();
  family.Dispatch();
  std::vector<Client> clients = family.clients();
  if (!EachTookATurn(clients, before)) return state.SkipWithError(kNotEachOnce);
  std::sort(clients.begin(), clients.end(),
            [](const Client& left, const Client& right) { return *left.turn < *right.turn; });

  Latencies dispatches(state.max_iterations);
  Latencies loops(state.max_iterations);
  int64_t allocations = 0;
  for ([[maybe_unused]] auto round : state) {
    family.Owe();
    before = turns_taken;
    const int64_t allocations_before = AllocationCount();
    dispatches.Add(TimeOf([&] { family.Dispatch(); }), state);
    allocations += AllocationCount() - allocations_before;
    if (!EachTookATurn(clients, before)) return state.SkipWithError(kNotEachOnce);
    family.Owe();
    loops.Add(TimeOf([&] {
                for (const Client& client : clients) client.callback(1, client.turn);
              }),
              state);
    family.Dispatch();
  }
  const auto per_client = [&](Latencies& all) {
    return all.Quantile(0.5) / static_cast<double>(count);
  };
  state.counters["per_client_ns"] = per_client(dispatches);
  state.counters["loop_per_client_ns"] = per_client(loops);
  state.counters["above_ns"] = per_client(dispatches) - per_client(loops);  // of this same pass
  state.counters["allocations"] =
      static_cast<double>(allocations) / static_cast<double>(state.iterations());
}

const Registration kRegistration([] {
  struct Row {
    const char* name;
    void (*run)(benchmark::State& state);
  };
  for (const Row& row : {
           Row{"dispatch/battery", ToClients<BatteryDispatch>},
           Row{"dispatch/sensor", ToClients<SensorDispatch>},
           Row{"dispatch/thermal", ToClients<ThermalDispatch>},
       }) {
    benchmark::RegisterBenchmark(row.name, row.run)
        ->UseManualTime()
        ->ArgName("clients")
        ->RangeMultiplier(10)
        ->Range(1, kMostClients)
        ->Iterations(Rounds(2'000));
  }
});

}  // namespace

}  // namespace norvik::qel::bench
