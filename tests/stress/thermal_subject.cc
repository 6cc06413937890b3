// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "guard.h"
#include "quorvel.h"
#include "quorvel/simulated/thermal.h"
#include "stress_tests.h"
#include "subject.h"

namespace norvik::qel::stress {

namespace {

using aidl::android::hardware::thermal::Temperature;
using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using services::HidlThermalOperation;
using services::ThermalOperation;
using simulated::ThermalPath;

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

int RegisterClient(void* handle, int id, const char* type, const char* name, Client& cookie) {
  const ThermalCallbackParam param = {
      .id = id, .type_name = type, .temperature_name = name, .callback = Client::Hear};
  return RegisterThermalCallback(handle, &param, &cookie);
}

class ThermalOver : public Subject {
 public:
  explicit ThermalOver(ThermalPath path) : path_(path) {
    if (path == ThermalPath::kAidl) return;
    thermal_.Undeclare(ThermalPath::kAidl);
    thermal_.Declare(path);
  }
  ~ThermalOver() override { close(nowhere_); }
  const char* name() const override { return is_aidl() ? "thermal" : "thermal-hidl"; }

  void Init(void** handle) const override { InitThermalInfo(handle); }
  void Deinit(void** handle) const override { DeinitThermalInfo(handle); }
  int clients() const override { return 2 * kTypes; }
  int Register(void* handle, int client, Client& cookie) const override {
    const Listened& listened = kListened.at(static_cast<size_t>(client % kTypes));
    return RegisterClient(handle, client, listened.type_name, listened.name, cookie);
  }
  int Deregister(void* handle, int client) const override {
    return DeregisterThermalCallback(handle, client);
  }
  void Ask(void* handle, int round) const override {
    std::array<const char*, 3> names = {"skin", "cpu", "nobody"};
    std::array<thermistor, 3> readings = {};
    int count = static_cast<int>(readings.size());
    ExpectEqual(GetBulkTemperatureByNames(handle, names.data(), 3, readings.data(), &count), 0,
                "a bulk query");
    Expect(count == 0 || count == 2, "readings that never were");
    std::array<int, 16> limits = {};
    int size = static_cast<int>(limits.size());
    ExpectEqual(GetBatteryChargeLimitCurrent(handle, limits.data(), &size, round % 2 == 0), 0,
                "a limits query");
    DumpThermalInfo(handle, nowhere_);
  }

  void Report(int value) override {
    for (const Listened& listened : kListened) Notify(listened.type, listened.name, value);
  }
  // Severities are passed on as reported, not checked, which lets the stress tests tell them apart.
  int Heard(int /*client*/, int value) const override { return value; }

  void Start() override { thermal_.Start(path_); }
  void Kill() override { thermal_.Kill(path_); }
  size_t held() const override { return thermal_.callback_count(path_); }
  size_t held_by_handle() const override { return kTypes; }
  fake::Script& enlist() override {
    return is_aidl() ? thermal_.on(ThermalOperation::kRegisterThermalChangedCallbackWithType)
                     : thermal_.on(HidlThermalOperation::kRegisterThermalChangedCallback);
  }
  // Four between five attempts; the last of these five is also the first of ten.
  int pauses() const override { return 4 + 10; }
  bool revives_by_question() const override { return true; }

  long Hostilities(int rounds) override {
    const auto kept = thermal_.data();
    long done = 0;
    for (int round = 0; round < rounds; ++round) {
      UnderWay("hostile values");
      done += ManyTemperatures() + OddNames() + OddSeverities();
      thermal_.Change([&](auto& data) { data = kept; });
      Deliver();
    }
    return done;
  }

 private:
  bool is_aidl() const { return path_ == ThermalPath::kAidl; }
  void Notify(TemperatureType type, const std::string& name, int severity) {
    thermal_.Notify({.type = type,
                     .name = name,
                     .value = 30,
                     .throttlingStatus = static_cast<ThrottlingSeverity>(severity)});
  }
  void SetTemperatures(const std::vector<Temperature>& temperatures) {
    thermal_.Change([&](auto& data) { data.temperatures = temperatures; });
  }

  // A thousand at once, in an order of their own, NaN and infinite ones among them.
  long ManyTemperatures() {
    constexpr int kMany = 1000;
    constexpr std::array kValues = {std::numeric_limits<float>::quiet_NaN(),
                                    std::numeric_limits<float>::infinity(),
                                    -std::numeric_limits<float>::max(), 36.5F};
    std::vector<Temperature> temperatures;
    std::vector<std::string> names;
    temperatures.reserve(kMany);
    names.reserve(kMany);
    for (int i = 0; i < kMany; ++i) {
      names.push_back("t" + std::to_string(kMany + i * 7 % kMany));
      temperatures.push_back({.type = TemperatureType::BCL_CURRENT,
                              .name = i % 2 == 0 ? names.back() : "AUDIO" + names.back(),
                              .value = kValues.at(static_cast<size_t>(i) % kValues.size()),
                              .throttlingStatus = static_cast<ThrottlingSeverity>(i)});
      if (i % 2 == 1) names.back() = temperatures.back().name;
    }
    SetTemperatures(temperatures);
    Start();
    Handle handle(*this);
    std::vector<const char*> asked;
    asked.reserve(kMany);
    for (const std::string& name : names) asked.push_back(name.c_str());
    std::vector<thermistor> readings(kMany);
    int count = kMany;
    ExpectEqual(
        GetBulkTemperatureByNames(handle.get(), asked.data(), kMany, readings.data(), &count), 0,
        "a bulk query of a thousand");
    ExpectEqual(count, kMany, "readings");
    Expect(std::is_sorted(
               readings.begin(), readings.end(),
               [](const thermistor& a, const thermistor& b) { return strcmp(a.name, b.name) < 0; }),
           "readings out of order");
    for (const thermistor& reading : readings) {
      const auto of = std::find(names.begin(), names.end(), reading.name) - names.begin();
      const float expected = temperatures.at(static_cast<size_t>(of)).value;
      Expect(reading.value == expected || (std::isnan(reading.value) && std::isnan(expected)),
             "a reading that never was");
    }
    --count;
    ExpectEqual(
        GetBulkTemperatureByNames(handle.get(), asked.data(), kMany, readings.data(), &count),
        -EINVAL, "a bulk query without room");
    std::vector<int> limits(kMany / 2);
    int size = kMany / 2;
    ExpectEqual(GetBatteryChargeLimitCurrent(handle.get(), limits.data(), &size, false), 0,
                "a limits query");
    ExpectEqual(size, kMany / 2, "limits");
    for (int i = 0; i < size; ++i) {
      ExpectEqual(limits.at(static_cast<size_t>(i)), 2 * i + 1, "a limit");
    }
    DumpThermalInfo(handle.get(), nowhere_);
    // Clients of five hundred names of one type, which has one worker.
    std::deque<Client> clients(kMany);
    for (int i = 0; i < kMany; ++i) {
      ExpectEqual(RegisterClient(handle.get(), i, "BCL_CURRENT", asked.at(static_cast<size_t>(i)),
                                 clients.at(static_cast<size_t>(i))),
                  0, "a registration");
    }
    ExpectEqual(static_cast<long>(held()), 1, "callbacks held by the service");
    for (int i = 0; i < kMany; ++i) {
      Await(
          "the severity of a thousandth",
          [&] { return clients.at(static_cast<size_t>(i)).last.load(); }, i);
    }
    handle.Deinit();
    return kMany;
  }

  // Empty, endless, not UTF-8, the same twice.
  long OddNames() {
    const std::vector<std::string> names = {"", std::string(100'000, 'x'), "\xff\xfe %s%n\n",
                                            std::string(63, 'y'), std::string(64, 'z')};
    std::vector<Temperature> temperatures;
    for (const std::string& name : names) {
      for (const int twice : {1, 2}) {
        temperatures.push_back({.type = TemperatureType::SKIN,
                                .name = name,
                                .value = static_cast<float>(twice),
                                .throttlingStatus = static_cast<ThrottlingSeverity>(twice)});
      }
    }
    SetTemperatures(temperatures);
    Start();
    Handle handle(*this);
    for (size_t i = 0; i < names.size(); ++i) {
      const char* name = names[i].c_str();
      thermistor reading = {};
      int count = 1;
      ExpectEqual(GetBulkTemperatureByNames(handle.get(), &name, 1, &reading, &count), 0,
                  "a bulk query");
      ExpectEqual(count, 1, "readings");
      Expect(reading.value == 1, "of two with one name not the first is read");
      Expect(reading.name == names[i].substr(0, QUORVEL_THERMISTOR_NAME_SIZE - 1),
             "a name is not cut off as documented");
      // Clients of the second registration of an id, and of what is no type, are refused.
      const int client = static_cast<int>(i);
      ExpectEqual(RegisterClient(handle.get(), client, "SKIN", name, handle.client(client)), 0,
                  "a registration");
      ExpectEqual(RegisterClient(handle.get(), client, "SKIN", name, handle.client(client)),
                  -EINVAL, "a registration of an id that is taken");
      ExpectEqual(RegisterClient(handle.get(), client, name, name, handle.client(client)), -EINVAL,
                  "a registration for what is no type");
      Await(
          "the severity of the first", [&] { return handle.client(client).last.load(); }, 1);
    }
    Settle();
    for (size_t i = 0; i < names.size(); ++i) {
      const int client = static_cast<int>(i);
      Notify(TemperatureType::SKIN, names[i], 7 + client);
      Await(
          "a severity", [&] { return handle.client(client).last.load(); }, 7 + client);
      Settle();
    }
    DumpThermalInfo(handle.get(), nowhere_);
    handle.Deinit();
    return static_cast<long>(names.size());
  }

  // Out of range, and reports of types and names that nobody listens to.
  long OddSeverities() {
    SetTemperatures({{.type = TemperatureType::SKIN, .name = "skin"},
                     {.type = TemperatureType::CPU, .name = "cpu"},
                     {.type = TemperatureType::BATTERY, .name = "battery"},
                     {.type = static_cast<TemperatureType>(INT_MAX), .name = "cpu"}});
    Start();
    Handle handle(*this);
    handle.RegisterAll();
    long done = 0;
    for (const int severity : {-1, INT_MAX, INT_MIN + 1, 7, 0}) {
      Settle();
      const long before = handle.client(0).calls;
      Notify(TemperatureType::SKIN, "nobody", severity);
      Notify(static_cast<TemperatureType>(severity), "skin", severity);
      Notify(TemperatureType::CPU, "skin", severity);
      Settle();
      if (severity != static_cast<int>(TemperatureType::SKIN)) {
        ExpectEqual(handle.client(0).calls, before, "calls for what a client does not listen to");
      }
      Notify(TemperatureType::SKIN, "skin", severity);
      Await(
          "a hostile severity", [&] { return handle.client(0).last.load(); }, severity);
      done += 4;
    }
    handle.Deinit();
    return done;
  }

  simulated::Thermal thermal_;
  const ThermalPath path_;
  const int nowhere_ = open("/dev/null", O_WRONLY | O_CLOEXEC);
};

}  // namespace

std::unique_ptr<Subject> MakeThermal() {
  return std::make_unique<ThermalOver>(ThermalPath::kAidl);
}

std::unique_ptr<Subject> MakeHidlThermal() {
  return std::make_unique<ThermalOver>(ThermalPath::kHidl);
}

}  // namespace norvik::qel::stress
