// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <android/looper.h>
#include <android/sensor.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>

#include "hang_guard.h"
#include "quorvel.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"
#include "subject.h"

namespace norvik::qel::stress {

namespace {

using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using simulated::ThermalPath;

int Nowhere() {
  static const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  return nowhere;
}

struct Property {
  int (*add)(void*, BatteryInfoCallback, void*);
  int (*remove)(void*, BatteryInfoCallback);
  int (*get)(void*, bool);
};
constexpr std::array kProperties = {
    Property{RegisterBatteryLevelCallback, DeregisterBatteryLevelCallback, GetBatteryLevel},
    Property{RegisterBatteryCycleCountCallback, DeregisterBatteryCycleCountCallback,
             GetBatteryCycleCount},
    Property{RegisterWirelessChargerIsOnlineCallback, DeregisterWirelessChargerIsOnlineCallback,
             GetWirelessChargerIsOnline},
    Property{RegisterDockChargerIsOnlineCallback, DeregisterDockChargerIsOnlineCallback,
             GetDockChargerIsOnline}};
constexpr int kPropertyCount = static_cast<int>(kProperties.size());

const Property& PropertyOf(int client) {
  return kProperties.at(static_cast<size_t>(client % kPropertyCount));
}

// Each property has two clients, which differ in their functions.
BatteryInfoCallback FunctionOf(int client) {
  return client < kPropertyCount ? Client::Hear : Client::HearToo;
}

class Battery : public Subject {
 public:
  Battery() : Subject(InitBatteryInfo, DeinitBatteryInfo, 2 * kPropertyCount, 1) {}
  int Register(void* handle, int client, Client& cookie) const override {
    return PropertyOf(client).add(handle, FunctionOf(client), &cookie);
  }
  int Deregister(void* handle, int client) const override {
    return PropertyOf(client).remove(handle, FunctionOf(client));
  }
  void Ask(void* handle, int round) const override {
    const int value = PropertyOf(round).get(handle, /*use_cached=*/round % 3 == 0);
    if (value < -1 && value != -EAGAIN) Fail("never reported: " + std::to_string(value));
    DumpBatteryInfo(handle, Nowhere());
  }
  void Report(int value) override {
    health_.Change([=](auto& info) {
      info.batteryLevel = value;
      info.batteryCycleCount = value;
      info.chargerWirelessOnline = value % 2 == 1;
      info.chargerDockOnline = value % 2 == 1;
    });
  }
  int Heard(int client, int value) const override {
    return client % kPropertyCount < 2 ? value : (value + 1) % 2;
  }
  void Start() override { health_.Start(); }
  void Kill() override { health_.Kill(); }
  long held() const override { return static_cast<long>(health_.callback_count()); }

 private:
  simulated::Health health_;
};

constexpr int kProximity = ASENSOR_TYPE_PROXIMITY;
constexpr int kHinge = ASENSOR_TYPE_HINGE_ANGLE;

// The library does not survive the sensor service's death, and a hub's service starts only once. So
// a start after Kill() creates a new hub. No handle uses the old one any more.
class Sensors : public Subject {
 public:
  Sensors() : Subject(InitSensorInfo, DeinitSensorInfo, 4, 2) { Sensors::Kill(); }
  int Register(void* handle, int client, Client& cookie) const override {
    const auto add =
        client % 2 == 0 ? RegisterProximitySensorCallback : RegisterHingeAngleSensorCallback;
    return add(handle, client, Client::Hear, &cookie);
  }
  int Deregister(void* handle, int client) const override {
    const auto remove =
        client % 2 == 0 ? DeregisterProximitySensorCallback : DeregisterHingeAngleSensorCallback;
    return remove(handle, client);
  }
  void Ask(void* handle, int /*round*/) const override { DumpSensorInfo(handle, Nowhere()); }
  void Report(int value) override {
    const auto reading = static_cast<float>(value);
    hub_->Report({{.type = kProximity, .value = reading}, {.type = kHinge, .value = reading}});
  }
  void Start() override { hub_->Start(); }
  void Kill() override {
    hub_.reset();
    // Consumes a wake that an earlier handle has left in the process's looper.
    while (ALooper_forThread() != nullptr &&
           ALooper_pollOnce(0, nullptr, nullptr, nullptr) != ALOOPER_POLL_TIMEOUT) {
    }
    hub_.emplace();
    hub_->Add(kProximity, "proximity", 20'000);
    hub_->Add(kHinge, "hinge angle");
  }
  long held() const override { return hub_->listeners(kProximity) + hub_->listeners(kHinge); }

 private:
  std::optional<simulated::SensorHub> hub_;
};

struct Listened {
  const char* type_name;
  TemperatureType type;
  const char* name;
};
constexpr std::array kListened = {
    Listened{"SKIN", TemperatureType::SKIN, "skin"},
    Listened{"CPU", TemperatureType::CPU, "cpu"},
    Listened{"BATTERY", TemperatureType::BATTERY, "battery"},
};
constexpr int kTypes = static_cast<int>(kListened.size());

class ThermalOver : public Subject {
 public:
  explicit ThermalOver(ThermalPath path)
      : Subject(InitThermalInfo, DeinitThermalInfo, 2 * kTypes, kTypes), path_(path) {
    if (path == ThermalPath::kAidl) return;
    thermal_.Undeclare(ThermalPath::kAidl);
    thermal_.Declare(path);
  }
  int Register(void* handle, int client, Client& cookie) const override {
    const Listened& listened = kListened.at(static_cast<size_t>(client % kTypes));
    const ThermalCallbackParam param = {.id = client,
                                        .type_name = listened.type_name,
                                        .temperature_name = listened.name,
                                        .callback = Client::Hear};
    return RegisterThermalCallback(handle, &param, &cookie);
  }
  int Deregister(void* handle, int client) const override {
    return DeregisterThermalCallback(handle, client);
  }
  void Ask(void* handle, int round) const override {
    std::array<const char*, 3> names = {"skin", "cpu", "missing"};
    std::array<thermistor, 3> readings = {};
    int count = static_cast<int>(readings.size());
    ExpectEqual(GetBulkTemperatureByNames(handle, names.data(), 3, readings.data(), &count), 0,
                "the result of a bulk query");
    if (count != 0) ExpectEqual(count, 2, "the readings of a bulk query");
    std::array<int, 16> limits = {};
    int size = static_cast<int>(limits.size());
    ExpectEqual(GetBatteryChargeLimitCurrent(handle, limits.data(), &size, round % 2 == 0), 0,
                "the result of a limits query");
    DumpThermalInfo(handle, Nowhere());
  }
  // The library does not check severities, so each report can have a different value.
  void Report(int value) override {
    for (const Listened& listened : kListened) {
      thermal_.Notify({.type = listened.type,
                       .name = listened.name,
                       .value = 30,
                       .throttlingStatus = static_cast<ThrottlingSeverity>(value)});
    }
  }
  void Start() override { thermal_.Start(path_); }
  void Kill() override { thermal_.Kill(path_); }
  long held() const override { return static_cast<long>(thermal_.callback_count(path_)); }

 private:
  simulated::Thermal thermal_;
  const ThermalPath path_;
};

template <typename Kind, auto... arguments>
std::unique_ptr<Subject> Make() {
  return std::make_unique<Kind>(arguments...);
}

}  // namespace

const std::map<std::string, Family> kFamilies = {
    {"battery", {Make<Battery>}},
    {"thermal", {Make<ThermalOver, ThermalPath::kAidl>}},
    {"thermal-hidl", {Make<ThermalOver, ThermalPath::kHidl>}},
    {"sensor", {Make<Sensors>, /*survives_deaths=*/false}},
};

}  // namespace norvik::qel::stress
