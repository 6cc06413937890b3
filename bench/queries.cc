// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The cost of asking a service through the library, compared with the same calls made directly:
// with free calls, which shows the library's own share, and with a phone's latency.
#include <aidl/android/hardware/health/IHealth.h>
#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_manager.h>
#include <android/hardware/thermal/2.0/IThermal.h>
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks.h"
#include "quorvel.h"
#include "quorvel/fake/call_latency.h"
#include "quorvel/fake/gate.h"
#include "quorvel/fake/script.h"
#include "quorvel/services/health_service.h"
#include "quorvel/services/hidl_thermal_service.h"
#include "quorvel/services/thermal_service.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/thermal.h"
#include "threads.h"
#include "turns.h"

namespace norvik::qel::bench {

namespace {

namespace V1_0 = ::android::hardware::thermal::V1_0;
namespace V2_0 = ::android::hardware::thermal::V2_0;
using ::aidl::android::hardware::health::HealthInfo;
using ::aidl::android::hardware::health::IHealth;
using ::android::hardware::hidl_vec;
using simulated::ThermalPath;
using AidlThermal = ::aidl::android::hardware::thermal::IThermal;
using AidlTemperature = ::aidl::android::hardware::thermal::Temperature;
using AidlType = ::aidl::android::hardware::thermal::TemperatureType;

// A round trip between two processes of a phone takes some tens of microseconds.
constexpr std::chrono::microseconds kPhoneCall(30);

constexpr int kLevel = 73;
constexpr char kWrongAnswer[] = "wrong answer";
constexpr char kWrongCalls[] = "unexpected number of calls to the service";
constexpr char kNoService[] = "the service cannot be used";

enum class Price { kFree, kPhone };

// Makes the service start all its threads, on the worker's processor. Otherwise it would start one
// on the caller's processor when a call finds no idle thread. A thread that has just answered is
// not idle at once.
bool MakeServiceThreads(fake::Script& script, const auto& call) {
  constexpr int kThreads = 16;
  const WorkersAreMadeHere here;
  const auto gate = std::make_shared<fake::Gate>();
  script.Then(fake::Outcome::After(gate), kThreads);
  std::vector<std::thread> callers;
  for (int i = 0; i < kThreads; ++i) callers.emplace_back(call);
  const bool all_came = gate->WaitForArrivals(kThreads);
  gate->Open();
  for (std::thread& caller : callers) caller.join();
  return all_came;
}

int64_t ThreadCpuNs() {
  timespec used = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return used.tv_sec * 1'000'000'000 + used.tv_nsec;
}

// The cost of the library's query or of the direct one, except elapsed time.
struct Cost {
  Latencies cpu_ns = {};  // of the asking thread, without the services' wake-up times
  int64_t allocations = 0;
  int calls = 0;
};

// Alternates between the library's query and the direct one. Each returns whether its answer was
// right, and makes `calls` calls of the operation that `script` counts.
void Measure(benchmark::State& state, Price price, fake::Script& script, int calls,
             const std::function<bool()>& library, const std::function<bool()>& direct) {
  const fake::CallLatency latency(price == Price::kPhone ? kPhoneCall : kPhoneCall.zero());
  const auto ask = [&script](const std::function<bool()>& query,
                             Cost& cost) -> std::optional<int64_t> {
    const int calls_before = script.calls();
    const int64_t allocations_before = AllocationCount();
    const int64_t cpu_before_ns = ThreadCpuNs();
    const int64_t began_ns = NowNs();
    const bool right = query();
    const int64_t took_ns = NowNs() - began_ns;
    cost.cpu_ns.Add(ThreadCpuNs() - cpu_before_ns);
    cost.allocations += AllocationCount() - allocations_before;
    cost.calls += script.calls() - calls_before;
    return right ? std::optional(took_ns) : std::nullopt;
  };
  Cost by_library;
  Cost by_hand;
  Turns turns;
  turns.Add("library", [&] { return ask(library, by_library); });
  turns.Add("direct", [&] { return ask(direct, by_hand); });
  if (!library() || !direct()) return state.SkipWithError(kWrongAnswer);
  if (!turns.Run(state, kWrongAnswer)) return;
  const auto expected = calls * state.iterations();
  if (by_library.calls != expected || by_hand.calls != expected) {
    return state.SkipWithError(kWrongCalls);
  }
  state.counters["own_cpu_ns"] = by_library.cpu_ns.Quantile(0.5) - by_hand.cpu_ns.Quantile(0.5);
  state.counters["own_allocations"] =
      static_cast<double>(by_library.allocations - by_hand.allocations) /
      static_cast<double>(state.iterations());
}

void Getter(benchmark::State& state, Price price) {
  simulated::Health health;
  health.SetLevel(kLevel);
  health.Start();
  const ndk::SpAIBinder binder(AServiceManager_checkService(services::kHealthInstance));
  const std::shared_ptr<IHealth> service = IHealth::fromBinder(binder);
  fake::Script& script = health.on(services::HealthOperation::kGetHealthInfo);
  const auto direct = [&] {
    HealthInfo info;
    return service->getHealthInfo(&info).isOk() && info.batteryLevel == kLevel;
  };
  if (service == nullptr || !MakeServiceThreads(script, direct)) {
    return state.SkipWithError(kNoService);
  }
  void* handle = nullptr;
  {
    const WorkersAreMadeHere here;
    InitBatteryInfo(&handle);
  }
  const auto library = [&] { return GetBatteryLevel(handle, /*use_cached=*/false) == kLevel; };
  Measure(state, price, script, /*calls=*/1, library, direct);
  DeinitBatteryInfo(&handle);
}

// A phone with one thermal service and `sensors` sensors, alternately the battery's voltage and
// current limits. Every other pair concerns audio.
class ThermalPhone {
 public:
  ThermalPhone(ThermalPath path, int sensors) : path_(path), sensors_(sensors) {
    thermal_.Change([&](services::ThermalData& data) {
      data = {};
      for (int i = 0; i < sensors; ++i) {
        data.temperatures.push_back(
            {.type = i % 2 == 0 ? AidlType::BCL_VOLTAGE : AidlType::BCL_CURRENT,
             .name = SensorName(i),
             .value = static_cast<float>(i)});
      }
    });
    thermal_.Undeclare(ThermalPath::kAidl);
    thermal_.Declare(path);
    thermal_.Start(path);
    if (path == ThermalPath::kAidl) {
      aidl_ = AidlThermal::fromBinder(
          ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance)));
    } else {
      hidl_ = V2_0::IThermal::tryGetService();
    }
  }
  ~ThermalPhone() { DeinitThermalInfo(&handle_); }
  ThermalPhone(const ThermalPhone&) = delete;
  ThermalPhone& operator=(const ThermalPhone&) = delete;

  // Starts all threads; false if the service cannot be used.
  bool Initialize() {
    if (aidl_ == nullptr && hidl_ == nullptr) return false;
    if (!MakeServiceThreads(script(kAll), [this] { return Count(); })) return false;
    const WorkersAreMadeHere here;
    InitThermalInfo(&handle_);
    int size = -1;
    std::vector<int> limits(static_cast<size_t>(sensors_));
    // The first query links to the service.
    return GetBatteryChargeLimitCurrent(handle_, limits.data(), &size, /*use_cached=*/false) == 0;
  }

  static std::string SensorName(int index) {
    return (index / 2 % 2 == 0 ? "AUDIO_limit_" : "limit_") + std::to_string(index);
  }

  static constexpr auto kAll = services::ThermalOperation::kGetTemperatures;
  static constexpr auto kOfType = services::ThermalOperation::kGetTemperaturesWithType;
  // The script of an AIDL operation, or of the only HIDL operation for temperatures.
  fake::Script& script(services::ThermalOperation operation) {
    return path_ == ThermalPath::kAidl
               ? thermal_.on(operation)
               : thermal_.on(services::HidlThermalOperation::kGetCurrentTemperatures);
  }

  // The number of records of one type, or of all, that the service returns, asked directly; -1 if
  // it fails.
  int Count(std::optional<AidlType> type = std::nullopt) {
    int count = -1;
    if (hidl_ == nullptr) {
      std::vector<AidlTemperature> records;
      const auto answered =
          type ? aidl_->getTemperaturesWithType(*type, &records) : aidl_->getTemperatures(&records);
      return answered.isOk() ? static_cast<int>(records.size()) : -1;
    }
    const auto answered = hidl_->getCurrentTemperatures(
        type.has_value(), static_cast<V2_0::TemperatureType>(type.value_or(AidlType::UNKNOWN)),
        [&count](const V1_0::ThermalStatus& status, const hidl_vec<V2_0::Temperature>& records) {
          if (status.code == V1_0::ThermalStatusCode::SUCCESS) {
            count = static_cast<int>(records.size());
          }
        });
    return answered.isOk() ? count : -1;
  }

  void* handle() const { return handle_; }

 private:
  const ThermalPath path_;
  const int sensors_;
  simulated::Thermal thermal_;
  std::shared_ptr<AidlThermal> aidl_;  // of aidl_ and hidl_ one is null
  ::android::sp<V2_0::IThermal> hidl_;
  void* handle_ = nullptr;
};

// A refresh of the battery's charge limits, which is two calls.
void Limits(benchmark::State& state, Price price, ThermalPath path) {
  const int sensors = static_cast<int>(state.range(0));
  ThermalPhone phone(path, sensors);
  if (!phone.Initialize()) return state.SkipWithError(kNoService);
  std::vector<int> limits(static_cast<size_t>(sensors));
  const auto library = [&] {
    int size = sensors;
    return GetBatteryChargeLimitCurrent(phone.handle(), limits.data(), &size,
                                        /*use_cached=*/false) == 0 &&
           size == sensors / 4;
  };
  const auto direct = [&] {
    return phone.Count(AidlType::BCL_VOLTAGE) == sensors / 2 &&
           phone.Count(AidlType::BCL_CURRENT) == sensors / 2;
  };
  Measure(state, price, phone.script(ThermalPhone::kOfType), /*calls=*/2, library, direct);
}

// Temperatures by name. If there are fewer sensors than names, the remaining names are unknown. The
// direct call gets all temperatures without a search.
void Bulk(benchmark::State& state, Price price, ThermalPath path) {
  const int sensors = static_cast<int>(state.range(0));
  const int wanted = static_cast<int>(state.range(1));
  ThermalPhone phone(path, sensors);
  if (!phone.Initialize()) return state.SkipWithError(kNoService);
  const int known = std::min(sensors, wanted);
  std::vector<std::string> texts;
  for (int i = 0; i < wanted; ++i) {
    // Known names, spread over the service's list.
    texts.push_back(i < known ? ThermalPhone::SensorName(i * sensors / known)
                              : "unknown_" + std::to_string(i));
  }
  std::vector<const char*> names;
  for (const std::string& text : texts) names.push_back(text.c_str());
  std::vector<thermistor> readings(names.size());
  const auto library = [&] {
    int count = wanted;
    return GetBulkTemperatureByNames(phone.handle(), names.data(), wanted, readings.data(),
                                     &count) == 0 &&
           count == known;
  };
  const auto direct = [&] { return phone.Count() == sensors; };
  Measure(state, price, phone.script(ThermalPhone::kAll), /*calls=*/1, library, direct);
}

const Registration kRegistration([] {
  const auto add = [](const std::string& name, auto function, auto... arguments) {
    return benchmark::RegisterBenchmark(name.c_str(), function, arguments...)
        ->UseManualTime()
        ->Iterations(Rounds(1'000));
  };
  for (const Price price : {Price::kFree, Price::kPhone}) {
    const std::string query = price == Price::kFree ? "query/free/" : "query/latency/";
    add(query + "getter", Getter, price);
    for (const ThermalPath path : {ThermalPath::kAidl, ThermalPath::kHidl}) {
      const std::string over = path == ThermalPath::kAidl ? "aidl" : "hidl";
      add(query + "bcl/" + over, Limits, price, path)->ArgName("sensors")->Arg(8)->Arg(100);
      add(query + "bulk/" + over, Bulk, price, path)
          ->ArgNames({"sensors", "names"})
          ->ArgsProduct({{8, 100}, {1, 8, 32}});
    }
  }
});

}  // namespace

}  // namespace norvik::qel::bench
