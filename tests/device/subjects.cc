// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <thread>

#include "device_test.h"

namespace norvik::qel::device_test {

namespace {

constexpr char kNotFound[] =
    " cannot be asked: it does not run, or the access policy refuses it to this process (look for "
    "'avc: denied' in the log)";

constexpr std::array kFunctions = {&Client::OnValue<0>, &Client::OnValue<1>};

auto FunctionOf(int id, const Client* client) {
  return client != nullptr ? kFunctions.at(id) : nullptr;
}

int EnrollForLevel(void* handle, int id, Client* client) {
  return RegisterBatteryLevelCallback(handle, FunctionOf(id, client), client);
}

int LeaveLevel(void* handle, int id) {
  return DeregisterBatteryLevelCallback(handle, kFunctions.at(id));
}

std::string BatteryAbsence(void* handle) {
  const bool answers = GetBatteryLevel(handle, /*use_cached=*/false) != -EAGAIN;
  return answers ? "" : std::string("the health service") + kNotFound;
}

template <auto kRegister>
int EnrollForSensor(void* handle, int id, Client* client) {
  return kRegister(handle, id, FunctionOf(id, client), client);
}

std::string SensorAbsence(void* handle) {
  const bool is_enabled = DumpText(DumpSensorInfo, handle).find("active:T") != std::string::npos;
  return is_enabled ? "" : std::string("the sensor service") + kNotFound;
}

int EnrollForThrottling(void* handle, int id, Client* client) {
  const auto& [type, name] = options.temperatures.front();
  const ThermalCallbackParam param = {.id = id,
                                      .type_name = type.c_str(),
                                      .temperature_name = name.c_str(),
                                      .callback = FunctionOf(id, client)};
  return RegisterThermalCallback(handle, &param, client);
}

// While no service can be reached, a registration waits whatever its name.
std::string ThermalAbsence(void* handle) {
  const ThermalCallbackParam param = {.id = 2,
                                      .type_name = "SKIN",
                                      .temperature_name = "no such temperature",
                                      .callback = kFunctions[0]};
  const bool waits = RegisterThermalCallback(handle, &param, handle) == 0;
  return waits ? std::string("the thermal service") + kNotFound : "";
}

}  // namespace

Options options;

const std::vector<Subject>& Subjects() {
  static const std::vector<Subject> subjects = {
      {"BatteryLevel", "battery", InitBatteryInfo, DeinitBatteryInfo, DumpBatteryInfo,
       EnrollForLevel, LeaveLevel, BatteryAbsence},
      {"Proximity", "sensor", InitSensorInfo, DeinitSensorInfo, DumpSensorInfo,
       EnrollForSensor<RegisterProximitySensorCallback>, DeregisterProximitySensorCallback,
       SensorAbsence},
      {"HingeAngle", "sensor", InitSensorInfo, DeinitSensorInfo, DumpSensorInfo,
       EnrollForSensor<RegisterHingeAngleSensorCallback>, DeregisterHingeAngleSensorCallback,
       SensorAbsence},
      {"Throttling", "thermal", InitThermalInfo, DeinitThermalInfo, DumpThermalInfo,
       EnrollForThrottling, DeregisterThermalCallback, ThermalAbsence},
  };
  return subjects;
}

int Client::calls() const {
  std::lock_guard<std::mutex> lock(lock_);
  return calls_;
}

int Client::value() const {
  std::lock_guard<std::mutex> lock(lock_);
  return value_;
}

bool Client::WaitForCalls(int count, Clock::duration limit) const {
  std::unique_lock<std::mutex> lock(lock_);
  return called_.wait_for(lock, limit, [&] { return calls_ >= count; });
}

void Client::Take(int value) {
  if (on_call) on_call();
  std::lock_guard<std::mutex> lock(lock_);
  ++calls_;
  value_ = value;
  called_.notify_all();
}

void SubjectTest::SetUp() {
  static std::map<std::string, std::string> absences;  // asked once: that takes seconds
  std::string& absence = absences[subject_.name];
  const std::string family = subject_.family;
  const auto skip = [&] {
    if (options.required.contains(family)) FAIL() << "required: " << absence;
    GTEST_SKIP() << absence;
  };
  if (family == "thermal" && options.temperatures.empty()) absence = "no --temperature given";
  if (!absence.empty()) return skip();
  const int enrolled = handle_.Enroll(0, &client_);
  if (family == "sensor" && enrolled == -ENOSYS) absence = "the device has no such sensor";
  if (!absence.empty()) return skip();
  ASSERT_EQ(enrolled, 0) << "the registration is refused; the log has the reason";
  if (client_.WaitForCalls(1)) return;
  absence = subject_.absence(handle_.get());
  if (!absence.empty()) return skip();
  FAIL() << "the service answers, but the client is not called within " << options.limit.count()
         << " s";
}

std::string DumpText(void (*dump)(void* handle, int fd), void* handle) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return {};
  std::thread writer([&] {
    dump(handle, ends[1]);
    close(ends[1]);
  });
  std::string text;
  char part[256];
  for (ssize_t size; (size = read(ends[0], part, sizeof part)) > 0;) {
    text.append(part, static_cast<size_t>(size));
  }
  writer.join();
  close(ends[0]);
  return text;
}

bool Eventually(const std::function<bool()>& is_so, Clock::duration limit) {
  const auto deadline = Clock::now() + limit;
  while (!is_so()) {
    if (Clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

}  // namespace norvik::qel::device_test
