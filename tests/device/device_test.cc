// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Tests of the C functions against the services of the device that they run on. The same code runs
// on a phone and on a host.
#include <android/binder_process.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <semaphore>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "quorvel.h"

namespace {

using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr char kUsage[] = R"(
usage: quorvel_device_test [OPTION...] [GOOGLETEST OPTION...]

  --temperature TYPE:NAME           a temperature of this device, such as SKIN:back; clients
                                    register for the first, queries read all
  --require FAMILY                  battery, sensor or thermal: fail where tests would be skipped
  --restart-command FAMILY=COMMAND  battery or thermal: how to restart its service
  --change-command FAMILY=COMMAND   how to make its service report a change after the restart
  --limit SECONDS                   for the first value of a client (default 5)
  --listen SECONDS                  how long to watch threads and memory (default 20)
  --soak                            the same for ten minutes
)";
constexpr char kNotFound[] =
    " cannot be asked: it does not run, or the access policy refuses it to this process (look for "
    "'avc: denied' in the log)";
constexpr seconds kReturnLimit(30);         // from the restart of a service to a call of its client
constexpr int64_t kMemoryTolerance = 1024;  // kilobytes

// Options from the command line. Families are "battery", "sensor" and "thermal".
struct Options {
  seconds limit{5};
  seconds listening{20};
  std::vector<std::pair<std::string, std::string>> temperatures;  // types and names
  std::set<std::string> required;
  std::map<std::string, std::string> commands;  // by option and family: "--restart-command battery"
};
Options options;

// Polls until `is_so`; false after the limit.
[[nodiscard]] bool Eventually(const std::function<bool()>& is_so, seconds limit = options.limit) {
  const auto deadline = Clock::now() + limit;
  while (!is_so()) {
    if (Clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

// The cookie of a registration. Only one thread may wait for calls.
class Client {
 public:
  // A battery client is identified by its function, so each kId is a separate client.
  template <int kId>
  static void OnValue(int value, void* cookie) {
    auto& self = *static_cast<Client*>(cookie);
    if (self.on_call) self.on_call();
    self.value_ = value;
    ++self.calls_;
    self.called_.release();
  }

  std::function<void()> on_call;  // set it before the registration

  int calls() const { return calls_; }
  int value() const { return value_; }  // of the last call
  [[nodiscard]] bool WaitForCalls(int count, Clock::duration limit = options.limit) {
    const auto deadline = Clock::now() + limit;
    while (calls_ < count && called_.try_acquire_until(deadline)) {
    }
    return calls_ >= count;
  }

 private:
  std::counting_semaphore<> called_{0};
  std::atomic<int> calls_ = 0;
  std::atomic<int> value_ = 0;
};
constexpr std::array kFunctions = {&Client::OnValue<0>, &Client::OnValue<1>};

auto FunctionOf(int id, const Client* client) {
  return client != nullptr ? kFunctions.at(id) : nullptr;
}

std::string DumpText(void (*dump)(void* handle, int fd), void* handle) {
  const int file = memfd_create("dump", MFD_CLOEXEC);
  dump(handle, file);
  std::string text(std::max<off_t>(lseek(file, 0, SEEK_END), 0), '\0');
  EXPECT_EQ(pread(file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  close(file);
  return text;
}

// A value that a client can register for, with the functions of its family.
struct Subject {
  const char* name;
  const char* family;
  void (*init)(void** handle);
  void (*deinit)(void** handle);
  void (*dump)(void* handle, int fd);
  // `id` is 0 or 1. A null client registers a null function.
  int (*enroll)(void* handle, int id, Client* client);
  int (*leave)(void* handle, int id);
  // Whether the service can be used. Called after a registration.
  bool (*answers)(void* handle);
};

bool SensorAnswers(void* handle) {
  return DumpText(DumpSensorInfo, handle).find("active:T") != std::string::npos;
}

int EnrollForThrottling(void* handle, int id, Client* client) {
  const auto& [type, name] = options.temperatures.front();
  const ThermalCallbackParam param = {id, type.c_str(), name.c_str(), FunctionOf(id, client)};
  return RegisterThermalCallback(handle, &param, client);
}

// A registration for an unknown name fails only if the service answers. Otherwise it waits.
bool ThermalAnswers(void* handle) {
  const ThermalCallbackParam param = {2, "SKIN", "no such temperature", kFunctions[0]};
  return RegisterThermalCallback(handle, &param, handle) != 0;
}

int EnrollForLevel(void* handle, int id, Client* client) {
  return RegisterBatteryLevelCallback(handle, FunctionOf(id, client), client);
}

int LeaveLevel(void* handle, int id) {
  return DeregisterBatteryLevelCallback(handle, kFunctions.at(id));
}

bool BatteryAnswers(void* handle) {
  return GetBatteryLevel(handle, /*use_cached=*/false) != -EAGAIN;
}

constexpr Subject kBattery = {"BatteryLevel",  "battery",      InitBatteryInfo, DeinitBatteryInfo,
                              DumpBatteryInfo, EnrollForLevel, LeaveLevel,      BatteryAnswers};
template <auto kRegister, auto kDeregister>
constexpr Subject SensorSubject(const char* name) {
  return {name,
          "sensor",
          InitSensorInfo,
          DeinitSensorInfo,
          DumpSensorInfo,
          [](void* handle, int id, Client* client) {
            return kRegister(handle, id, FunctionOf(id, client), client);
          },
          kDeregister,
          SensorAnswers};
}

constexpr Subject kProximity =
    SensorSubject<RegisterProximitySensorCallback, DeregisterProximitySensorCallback>("Proximity");
constexpr Subject kHingeAngle =
    SensorSubject<RegisterHingeAngleSensorCallback, DeregisterHingeAngleSensorCallback>(
        "HingeAngle");
constexpr Subject kThrottling = {
    "Throttling",    "thermal",           InitThermalInfo,           DeinitThermalInfo,
    DumpThermalInfo, EnrollForThrottling, DeregisterThermalCallback, ThermalAnswers};

class Handle {
 public:
  explicit Handle(const Subject& subject) : subject_(subject) { subject_.init(&handle_); }
  ~Handle() { Deinit(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  void* get() const { return handle_; }
  void Deinit() { subject_.deinit(&handle_); }
  int Enroll(int id, Client* client) const { return subject_.enroll(handle_, id, client); }
  int Leave(int id) const { return subject_.leave(handle_, id); }
  std::string Dump() const { return DumpText(subject_.dump, handle_); }

 private:
  const Subject& subject_;
  void* handle_ = nullptr;
};

// A handle with a client that has been called. Without a service the test is skipped with a reason.
class SubjectTest : public testing::Test {
 protected:
  explicit SubjectTest(const Subject& subject) : subject_(subject), handle_(subject) {}
  void SetUp() override {
    static std::map<std::string, std::string> absences;  // kept, because finding out takes seconds
    std::string& absence = absences[subject_.name];
    if (absence.empty()) Enroll(&absence);
    if (HasFatalFailure() || absence.empty()) return;
    if (options.required.contains(subject_.family)) FAIL() << "required: " << absence;
    GTEST_SKIP() << absence;
  }

  const Subject& subject_;
  Client client_, other_;  // declared first, so that the handle is destroyed before its cookies
  Handle handle_;

 private:
  void Enroll(std::string* absence) {
    const std::string family = subject_.family;
    if (family == "thermal" && options.temperatures.empty()) {
      *absence = "no --temperature given";
      return;
    }
    const int enrolled = handle_.Enroll(0, &client_);
    if (family == "sensor" && enrolled == -ENOSYS) {
      *absence = "the device has no such sensor";
      return;
    }
    ASSERT_EQ(enrolled, 0) << "the registration is refused; the log has the reason";
    if (client_.WaitForCalls(1)) return;
    ASSERT_FALSE(subject_.answers(handle_.get()))
        << "the service answers, but the client is not called within " << options.limit.count()
        << " s";
    *absence =
        "the " + std::string(family == "battery" ? "health" : family) + " service" + kNotFound;
  }
};

class ClientTest : public SubjectTest, public testing::WithParamInterface<const Subject*> {
 protected:
  ClientTest() : SubjectTest(*GetParam()) {}
};
template <const Subject& kSubject>
class QueryTest : public SubjectTest {
 protected:
  QueryTest() : SubjectTest(kSubject) {}
};
using BatteryQueryTest = QueryTest<kBattery>;
using ThermalQueryTest = QueryTest<kThrottling>;

INSTANTIATE_TEST_SUITE_P(Device, ClientTest,
                         testing::Values(&kBattery, &kProximity, &kHingeAngle, &kThrottling),
                         [](const auto& info) { return std::string(info.param->name); });

// Resources of this process. Binder threads do not count, because the platform adds them on demand.
struct Holdings {
  int threads = 0;
  int64_t descriptors = 0;
  int64_t kilobytes = 0;

  static Holdings Now() {
    Holdings now;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
      std::string name;
      std::ifstream(task.path() / "comm") >> name;
      if (!name.empty() && name.find("inder:") == std::string::npos) ++now.threads;
    }
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    now.descriptors = std::distance(begin(descriptors), end(descriptors));
    std::ifstream memory("/proc/self/smaps_rollup");
    for (std::string field; memory >> field;) {
      if (field == "Rss:") memory >> now.kilobytes;
    }
    return now;
  }
  // Expects that the process has no more resources than in this object.
  void ExpectFlat() const {
    Holdings now;
    // The kernel may list a joined thread for a moment: then here, or already in this object.
    EXPECT_TRUE(Eventually([&] {
      now = Now();
      return now.threads <= threads && now.descriptors <= descriptors &&
             now.kilobytes <= kilobytes + kMemoryTolerance;
    })) << "threads "
        << threads << " -> " << now.threads << ", descriptors " << descriptors << " -> "
        << now.descriptors << ", memory " << kilobytes << " -> " << now.kilobytes << " kB";
  }
};

TEST_P(ClientTest, RegistersOnceAndLeavesOnceAlsoInsideItsCallback) {
  EXPECT_EQ(handle_.Enroll(0, &client_), -EINVAL);
  EXPECT_EQ(handle_.Enroll(1, nullptr), -EINVAL);
  EXPECT_EQ(subject_.enroll(nullptr, 1, &other_), -EINVAL);
  EXPECT_EQ(handle_.Leave(1), -EINVAL);
  std::atomic<int> left = 1;
  other_.on_call = [&] { left = handle_.Leave(1); };
  EXPECT_EQ(handle_.Enroll(1, &other_), 0);
  EXPECT_TRUE(other_.WaitForCalls(1));
  EXPECT_EQ(left, 0);
  EXPECT_EQ(handle_.Leave(1), -EINVAL);
  EXPECT_EQ(handle_.Leave(0), 0);
  EXPECT_EQ(handle_.Leave(0), -EINVAL);
  handle_.Deinit();  // a call under way uses `left`
}

TEST_P(ClientTest, OutlivesOtherHandlesThatLeaveNothingBehind) {
  const Holdings before = Holdings::Now();
  for (int i = 0; i < 1000; ++i) {
    Client client;
    const Handle handle(subject_);
    ASSERT_NE(handle.get(), nullptr);
    if (i % 10 != 0) continue;
    ASSERT_EQ(handle.Enroll(0, &client), 0);
    EXPECT_TRUE(i > 0 || client.WaitForCalls(1));
  }
  before.ExpectFlat();
  ASSERT_EQ(handle_.Enroll(1, &other_), 0);
  EXPECT_TRUE(other_.WaitForCalls(1));
}

TEST_P(ClientTest, IsInTheDump) {
  const std::string with_client = handle_.Dump();
  EXPECT_NE(with_client.find("Info:\n"), std::string::npos) << with_client;
  ASSERT_EQ(handle_.Leave(0), 0);
  EXPECT_NE(handle_.Dump(), with_client);
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  close(ends[0]);
  subject_.dump(handle_.get(), ends[1]);  // SIGPIPE would end the test
  close(ends[1]);
}

TEST_P(ClientTest, ListensWithoutGrowth) {
  const auto end = Clock::now() + options.listening;
  const int never = client_.calls() + 1'000'000'000;
  static_cast<void>(client_.WaitForCalls(never, options.listening / 10));  // buffers fill up
  const Holdings before = Holdings::Now();
  static_cast<void>(client_.WaitForCalls(never, end - Clock::now()));
  before.ExpectFlat();
}

TEST_P(ClientTest, SurvivesARestartOfTheService) {
  const std::string family = subject_.family;
  if (family == "sensor") GTEST_SKIP() << "the library does not survive the sensor service";
  const auto restart = options.commands.find("--restart-command " + family);
  if (restart == options.commands.end()) GTEST_SKIP() << "no --restart-command given";
  ASSERT_EQ(std::system(restart->second.c_str()), 0) << restart->second;
  const auto change = options.commands.find("--change-command " + family);
  if (change != options.commands.end()) {
    // Makes no query, which would reconnect. Repeats the change, which may reach the old service.
    const auto deadline = Clock::now() + kReturnLimit;
    const int calls = client_.calls();
    do {
      ASSERT_EQ(std::system(change->second.c_str()), 0) << change->second;
    } while (!client_.WaitForCalls(calls + 1, seconds(1)) && Clock::now() < deadline);
    EXPECT_GT(client_.calls(), calls) << "the change does not reach the client";
  }
  EXPECT_TRUE(Eventually([&] { return subject_.answers(handle_.get()); }, kReturnLimit))
      << "the service has not come back";
  const auto is_linked = [&] { return handle_.Dump().find("services = F") == std::string::npos; };
  EXPECT_TRUE(Eventually(is_linked, kReturnLimit)) << handle_.Dump();
  ASSERT_EQ(handle_.Enroll(1, &other_), 0);
  EXPECT_TRUE(other_.WaitForCalls(1));
  EXPECT_TRUE(Eventually([&] { return client_.value() == other_.value(); }));
}

TEST_F(BatteryQueryTest, CachedAndFreshAgree) {
  const auto agreed = [&](int (*get)(void* handle, bool use_cached)) {
    int fresh = 0;
    // A report may arrive between the two getters.
    EXPECT_TRUE(Eventually([&] {
      fresh = get(handle_.get(), /*use_cached=*/false);
      return fresh == get(handle_.get(), /*use_cached=*/true);
    })) << fresh;
    return fresh;
  };
  const int level = agreed(GetBatteryLevel);
  EXPECT_TRUE(level >= 0 && level <= 100) << level;
  EXPECT_GE(agreed(GetBatteryCycleCount), 0);
  for (const auto charger : {GetWirelessChargerIsOnline, GetDockChargerIsOnline}) {
    const int online = agreed(charger);
    EXPECT_TRUE(online == QUORVEL_CHARGER_ONLINE || online == QUORVEL_CHARGER_OFFLINE) << online;
  }
}

TEST_F(ThermalQueryTest, TemperaturesAreFoundByName) {
  std::vector<const char*> names = {"no such temperature"};
  std::set<std::string> known;
  for (const auto& [type, name] : options.temperatures) {
    EXPECT_GE(GetThermalTypeByName(handle_.get(), type.c_str()), 0) << type;
    names.push_back(name.c_str());
    known.insert(name.substr(0, QUORVEL_THERMISTOR_NAME_SIZE - 1));
  }
  std::vector<thermistor> readings(names.size());
  int count = static_cast<int>(readings.size());
  ASSERT_EQ(GetBulkTemperatureByNames(handle_.get(), names.data(), count, readings.data(), &count),
            0);
  std::set<std::string> found;
  for (int i = 0; i < count; ++i) {
    EXPECT_TRUE(found.insert(readings[i].name).second) << readings[i].name;
    EXPECT_FALSE(std::isinf(readings[i].value)) << readings[i].name;
  }
  EXPECT_EQ(found, known);
}

TEST_F(ThermalQueryTest, CachedAndFreshLimitsAgree) {
  for (const auto get : {GetBatteryChargeLimitCurrent, GetBatteryChargeLimitVoltage}) {
    const auto limits = [&](bool use_cached) {
      std::vector<int> severities(64);
      int size = static_cast<int>(severities.size());
      EXPECT_EQ(get(handle_.get(), severities.data(), &size, use_cached), 0);
      severities.resize(size);
      return severities;
    };
    const std::vector<int> fresh = limits(/*use_cached=*/false);
    EXPECT_EQ(limits(/*use_cached=*/true), fresh);
  }
}

[[noreturn]] void Refuse(const std::string& argument) {
  std::fprintf(stderr, "quorvel_device_test: invalid argument '%s'\n%s", argument.c_str(), kUsage);
  std::exit(2);
}

std::pair<std::string, std::string> Split(const std::string& text, char separator) {
  const size_t end = text.find(separator);
  if (end == std::string::npos || end == 0 || end + 1 == text.size()) Refuse(text);
  return {text.substr(0, end), text.substr(end + 1)};
}

void Parse(const std::string& name, const std::string& value) {
  const bool is_command = name == "--restart-command" || name == "--change-command";
  const auto [family, command] = is_command ? Split(value, '=') : std::pair(value, "");
  const bool restarts = family == "battery" || family == "thermal";
  const seconds time(std::strtol(value.c_str(), nullptr, 10));
  if (name == "--temperature") {
    options.temperatures.push_back(Split(value, ':'));
  } else if (name == "--require" && (restarts || family == "sensor")) {
    options.required.insert(family);
  } else if (is_command && restarts) {
    options.commands.emplace(name + " " + family, command);
  } else if (name == "--listen" && time.count() > 0) {
    options.listening = time;
  } else if (name == "--limit" && time.count() > 0) {
    options.limit = time;
  } else {
    Refuse(name + " " + value);
  }
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name == "--help") {
      std::printf("%s", kUsage);
      return 0;
    }
    if (name == "--soak") {
      options.listening = std::chrono::minutes(10);
    } else {
      Parse(name, ++i < argc ? argv[i] : "");
    }
  }
  ABinderProcess_startThreadPool();
  return RUN_ALL_TESTS();
}
