// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// An AIDL thermal service seen through the HIDL wrapper: queries, their records and failures, and
// callbacks.
#include "thermal_hidl_wrapper/thermal_hidl_wrapper.h"

#include <android/binder_manager.h>
#include <cutils/native_handle.h>

#include <cmath>
#include <cstdio>

#include "quorvel/fake/service_process.h"
#include "thermal_doubles.h"
#include "thermal_fixture.h"

// debug() leaks its arguments on purpose: a local service may keep them. Nothing else may leak.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT: the sanitizer's name
  return "leak:ThermalHidlWrapper::debug\n";
}

namespace norvik::qel {
namespace {

namespace hal = aidl::android::hardware::thermal;
namespace V1_0 = android::hardware::thermal::V1_0;
namespace V2_0 = android::hardware::thermal::V2_0;
using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_vec;
using hal::CoolingDevice;
using hal::CoolingType;
using hal::Temperature;
using hal::ThermalHidlWrapper;
using HidlType = V2_0::TemperatureType;

// A service in this process, for effects that a proxy hides. Its operations return `status` after
// they have written their results. A registration notifies before it returns.
class LocalThermal : public services::ThermalService {
 public:
  using Status = ndk::ScopedAStatus;
  using ThermalService::ThermalService;

  std::function<Status()> status = [] { return Status::ok(); };
  // Whether the callback answered the notification with ok.
  bool notification_was_ok = false;
  int dumps = 0;
  // The arguments of the last dump.
  int dump_descriptor = -1;
  std::vector<const char*> dump_arguments = {};

  Status getTemperatures(std::vector<Temperature>* out) override {
    out->resize(2);
    return status();
  }
  Status registerThermalChangedCallback(const Callback& callback) override {
    notification_was_ok = callback->notifyThrottling({.name = "early"}).isOk();
    return status();
  }
  Status unregisterThermalChangedCallback(const Callback&) override { return status(); }
  binder_status_t dump(int fd, const char** args, uint32_t count) override {
    ++dumps;
    dump_descriptor = fd;
    dump_arguments.assign(args, args + count);
    return STATUS_UNKNOWN_ERROR;  // the caller ignores it
  }
};

[[nodiscard]] bool Succeeded(const HidlAnswer& answer) {
  return answer.calls == 1 && !answer.failed() && answer.status.debugMessage == "";
}
[[nodiscard]] bool FailedWith(const HidlAnswer& answer, const std::string& message) {
  return answer.calls == 1 && answer.failed() && answer.status.debugMessage == message;
}

class ThermalWrapperFixture : public testing::Test {
 protected:
  ThermalWrapperFixture() {
    thermal_.Start(ThermalPath::kAidl);
    wrapper_ = sp<ThermalHidlWrapper>::make(hal::IThermal::fromBinder(
        ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance))));
  }
  ~ThermalWrapperFixture() override {
    wrapper_.clear();
    thermal_.Kill(ThermalPath::kAidl);
    EXPECT_TRUE(fake::WaitUntilDelivered());
    EXPECT_TRUE(log_.Lines().empty()) << "the wrapper logs nothing";
  }

  int Calls(ThermalOperation operation) { return thermal_.on(operation).calls(); }

  template <typename Record, typename Type, typename Callback>
  std::vector<Record> Ask(android::hardware::Return<void> (ThermalHidlWrapper::*query)(bool, Type,
                                                                                       Callback),
                          bool filter, Type type) {
    std::vector<Record> records(1);
    HidlAnswer answer;
    EXPECT_TRUE(((*wrapper_).*query)(filter, type, answer.Take(records)).isOk());
    EXPECT_TRUE(failure_ == nullptr ? Succeeded(answer) : FailedWith(answer, *failure_));
    EXPECT_EQ(answer.thread, std::this_thread::get_id());
    return records;
  }
  // The three queries of HIDL 2.0. They must succeed unless failure_ is set.
  auto Temperatures(bool filter = false, HidlType type = HidlType::SKIN) {
    return Ask<V2_0::Temperature>(&ThermalHidlWrapper::getCurrentTemperatures, filter, type);
  }
  auto Thresholds(bool filter = false, HidlType type = HidlType::SKIN) {
    return Ask<V2_0::TemperatureThreshold>(&ThermalHidlWrapper::getTemperatureThresholds, filter,
                                           type);
  }
  auto Coolers(bool filter = false, V2_0::CoolingType type = V2_0::CoolingType::CPU) {
    return Ask<V2_0::CoolingDevice>(&ThermalHidlWrapper::getCurrentCoolingDevices, filter, type);
  }
  // All three queries fail and return no records.
  void ExpectAllFail(bool filter, const std::string& message) {
    failure_ = &message;
    EXPECT_TRUE(Temperatures(filter).empty());
    EXPECT_TRUE(Thresholds(filter).empty());
    EXPECT_TRUE(Coolers(filter).empty());
    failure_ = nullptr;
  }

  fake::LogCapture log_;
  simulated::Thermal thermal_;
  sp<ThermalHidlWrapper> wrapper_;
  const std::string* failure_ = nullptr;  // the expected message, if any
};

// Records as text, so that NaN compares equal.
template <typename Record>
std::vector<std::string> Texts(const std::vector<Record>& records) {
  std::vector<std::string> texts;
  for (const Record& record : records) texts.push_back(toString(record));
  return texts;
}

using ThermalQueryTest = ThermalWrapperFixture;

TEST_F(ThermalQueryTest, TheQueriesOfHidl1AreRefusedWithoutACallToTheService) {
  wrapper_ = sp<ThermalHidlWrapper>::make(nullptr);
  const auto expect_refused = [this]<typename Record>(auto query, std::vector<Record> records) {
    HidlAnswer answer;
    EXPECT_TRUE(((*wrapper_).*query)(answer.Take(records)).isOk());
    EXPECT_TRUE(FailedWith(answer, "Operation unsupported by Thermal HIDL wrapper"));
    EXPECT_TRUE(records.empty());
  };
  expect_refused(&ThermalHidlWrapper::getTemperatures, std::vector<V1_0::Temperature>(1));
  expect_refused(&ThermalHidlWrapper::getCpuUsages, std::vector<V1_0::CpuUsage>(1));
  expect_refused(&ThermalHidlWrapper::getCoolingDevices, std::vector<V1_0::CoolingDevice>(1));
}

TEST_F(ThermalQueryTest, TemperaturesAreUnchangedExceptUnknownTypes) {
  // Severities are passed on unchanged, also unknown ones.
  const struct {
    int32_t aidl, hidl;
    float value;
    int32_t severity;
  } kRows[] = {
      {INT32_MIN, -1, 36.5F, 0}, {-2, -1, -0.0F, 1},   {-1, -1, NAN, 6}, {0, 0, -INFINITY, 7},
      {3, 3, 1e-45F, -1},        {8, 8, 1, INT32_MIN}, {9, 9, 2, 0},     {10, -1, 3, 0},
      {INT32_MAX, -1, 4, 0}};
  std::vector<V2_0::Temperature> expected;
  thermal_.Change([&](auto& data) {
    data.temperatures.clear();
    for (const auto& row : kRows) {
      const std::string name(expected.size(), '\xb0');
      data.temperatures.push_back({static_cast<TemperatureType>(row.aidl), name, row.value,
                                   static_cast<ThrottlingSeverity>(row.severity)});
      expected.push_back({static_cast<HidlType>(row.hidl), name, row.value,
                          static_cast<V2_0::ThrottlingSeverity>(row.severity)});
    }
  });
  EXPECT_EQ(Texts(Temperatures()), Texts(expected));
  // The service filters. A type without a name in HIDL is passed on as its number.
  EXPECT_THAT(Texts(Temperatures(true, static_cast<HidlType>(10))),
              ElementsAre(toString(expected[7])));
  EXPECT_EQ(Calls(ThermalOperation::kGetTemperatures), 1);
}

TEST_F(ThermalQueryTest, ThresholdsAreCutOrFilledToSeven) {
  const std::vector<float> full = {1, 2, 3, 4, 5, 6, 7};
  const std::vector<float> cold = {-1, NAN, -3, -4, -5, -6, -7};
  const std::vector<float> none(7, NAN);
  const struct {
    TemperatureType type;
    HidlType hidl_type;
    std::vector<float> hot, cold, hidl_hot, hidl_cold;
  } kRows[] = {
      {TemperatureType::SKIN, HidlType::SKIN, full, cold, full, cold},
      {TemperatureType::TPU, HidlType::UNKNOWN, {1, 2}, {}, {1, 2, NAN, NAN, NAN, NAN, NAN}, none},
      {TemperatureType::NPU, HidlType::NPU, {1, 2, 3, 4, 5, 6, 7, 8, 9}, full, full, full},
  };
  std::vector<V2_0::TemperatureThreshold> expected;
  thermal_.Change([&](auto& data) {
    data.thresholds.clear();
    for (const auto& row : kRows) {
      data.thresholds.push_back({row.type, "of a type", row.hot, row.cold});
      expected.push_back(
          {row.hidl_type, "of a type", row.hidl_hot.data(), row.hidl_cold.data(), NAN});
    }
  });
  EXPECT_EQ(Texts(Thresholds()), Texts(expected));
  EXPECT_THAT(Texts(Thresholds(true, static_cast<HidlType>(TemperatureType::TPU))),
              ElementsAre(toString(expected[1])));
}

TEST_F(ThermalQueryTest, CoolingDevicesOfUnknownTypesAreComponents) {
  const struct {
    int32_t aidl;
    uint32_t hidl;
    int64_t value;
  } kRows[] = {{-1, 6, 0},        {0, 0, 1},         {5, 5, -1},
               {6, 6, INT64_MIN}, {7, 6, INT64_MAX}, {INT32_MIN, 6, 9}};
  std::vector<V2_0::CoolingDevice> expected;
  thermal_.Change([&](auto& data) {
    data.cooling_devices.clear();
    for (const auto& row : kRows) {
      CoolingDevice& device = data.cooling_devices.emplace_back();
      device.type = static_cast<CoolingType>(row.aidl);
      device.name = std::to_string(row.aidl);
      device.value = row.value;
      expected.push_back({static_cast<V2_0::CoolingType>(row.hidl), device.name,
                          static_cast<uint64_t>(row.value)});
    }
  });
  EXPECT_EQ(Coolers(), expected);
  EXPECT_THAT(Coolers(true, static_cast<V2_0::CoolingType>(7)), ElementsAre(expected[4]));
}

TEST_F(ThermalQueryTest, AFailureOfTheServiceIsAStatusWithItsMessageAndNoRecords) {
  for (int operation = 0; operation < static_cast<int>(ThermalOperation::kCount); ++operation) {
    thermal_.on(static_cast<ThermalOperation>(operation))
        .Then(Outcome::Exception(EX_ILLEGAL_STATE, "not yet"));
  }
  for (const bool filter : {false, true}) ExpectAllFail(filter, "not yet");
  thermal_.Kill(ThermalPath::kAidl);
  ExpectAllFail(/*filter=*/false, "");

  // A service that fails may have written a partial answer.
  const auto local = ndk::SharedRefBase::make<LocalThermal>(thermal_.data());
  wrapper_ = sp<ThermalHidlWrapper>::make(local);
  EXPECT_EQ(Temperatures().size(), 2u);
  local->status = [] {
    return ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, "half");
  };
  const std::string message = "half";
  failure_ = &message;
  EXPECT_THAT(Temperatures(), IsEmpty());
}

TEST_F(ThermalQueryTest, DebugLeavesDescriptorAndOptionsToTheService) {
  const auto local = ndk::SharedRefBase::make<LocalThermal>(thermal_.data());
  wrapper_ = sp<ThermalHidlWrapper>::make(local);
  native_handle_t* const native = native_handle_create(/*numFds=*/2, /*numInts=*/0);
  native->data[0] = 11;
  native->data[1] = 12;
  {
    const hidl_vec<android::hardware::hidl_string> options = {"--all", "", "two words"};
    EXPECT_TRUE(wrapper_->debug(hidl_handle(native), options).isOk());
  }
  EXPECT_EQ(local->dump_descriptor, 11);
  EXPECT_THAT(local->dump_arguments, ElementsAre(testing::StrEq("--all"), testing::StrEq(""),
                                                 testing::StrEq("two words")));
  native->numFds = 1;
  EXPECT_TRUE(wrapper_->debug(hidl_handle(native), {}).isOk());
  EXPECT_THAT(local->dump_arguments, IsEmpty());
  EXPECT_EQ(local->dumps, 2);
  // Without a descriptor, or without a handle, the service is not called.
  for (const int count : {0, -1}) {
    native->numFds = count;
    EXPECT_TRUE(wrapper_->debug(hidl_handle(native), {"a"}).isOk());
  }
  EXPECT_TRUE(wrapper_->debug(hidl_handle(), {"a"}).isOk());
  EXPECT_EQ(local->dumps, 2);
  native->numFds = 0;
  native_handle_delete(native);
}

// A wrapper without a service is a caller's mistake. It is reported, and then an operation that
// needs the service ends the process.
TEST(ThermalWrapperDeathTest, WithoutAServiceEachOperationReportsAndContinues) {
  constexpr char kMessage[] = "Thermal AIDL HAL client used by HIDL wrapper was not initialized";
  const auto wrapper = sp<ThermalHidlWrapper>::make(nullptr);
  const auto print = [](const auto& status, const auto&...) {
    fprintf(stderr, "status: %s.\n", status.debugMessage.c_str());
  };
  const auto callback = sp<HidlThermalCallback>::make();
  const auto type = HidlType::SKIN;
  const auto cpu = V2_0::CoolingType::CPU;
  const std::string report = std::string("status: ") + kMessage + "\\.";
  EXPECT_DEATH(wrapper->getCurrentTemperatures(false, type, print).isOk(), report);
  EXPECT_DEATH(wrapper->getTemperatureThresholds(true, type, print).isOk(), report);
  EXPECT_DEATH(wrapper->getCurrentCoolingDevices(false, cpu, print).isOk(), report);
  EXPECT_DEATH(wrapper->registerThermalChangedCallback(callback, false, type, print).isOk(),
               report);

  // These calls fail before they need the service.
  std::vector<std::string> messages;
  const auto keep = [&](const auto& status) { messages.push_back(status.debugMessage); };
  EXPECT_TRUE(wrapper->registerThermalChangedCallback(nullptr, false, type, keep).isOk());
  EXPECT_TRUE(wrapper->unregisterThermalChangedCallback(nullptr, keep).isOk());
  EXPECT_TRUE(wrapper->unregisterThermalChangedCallback(callback, keep).isOk());
  EXPECT_THAT(messages, ElementsAre(kMessage, "Invalid nullptr callback", kMessage,
                                    "Invalid nullptr callback", kMessage,
                                    "The callback was not registered through wrapper before"));
}

constexpr char kRegistered[] = "The callback was already registered through wrapper";
constexpr char kNotRegistered[] = "The callback was not registered through wrapper before";

class ThermalCallbackTest : public ThermalWrapperFixture {
 protected:
  using HidlCallback = V2_0::IThermalChangedCallback;

  HidlAnswer Register(const sp<HidlCallback>& callback, bool filter = false,
                      HidlType type = HidlType::SKIN) {
    HidlAnswer answer;
    EXPECT_TRUE(
        wrapper_->registerThermalChangedCallback(callback, filter, type, answer.Take()).isOk());
    EXPECT_EQ(answer.thread, std::this_thread::get_id());
    return answer;
  }
  HidlAnswer Unregister(const sp<HidlCallback>& callback) {
    HidlAnswer answer;
    EXPECT_TRUE(wrapper_->unregisterThermalChangedCallback(callback, answer.Take()).isOk());
    return answer;
  }
  void RegisterOk(const sp<HidlCallback>& callback) { ASSERT_TRUE(Succeeded(Register(callback))); }
  size_t registered() const { return thermal_.callback_count(ThermalPath::kAidl); }
  static Temperature Hot(const std::string& name, TemperatureType type = TemperatureType::SKIN) {
    return {
        .type = type, .name = name, .value = 45.5F, .throttlingStatus = ThrottlingSeverity::SEVERE};
  }
  // Makes the service notify, and expects that the callback receives it.
  void ExpectNotified(HidlThermalCallback& callback) {
    thermal_.Notify(Hot("skin"));
    EXPECT_EQ(Take(callback), "skin");
  }
  // Takes the oldest notification and returns its name.
  static std::string Take(HidlThermalCallback& callback) {
    const auto heard = callback.heard.Take();
    return heard ? std::string(heard->temperature.name) : "(nothing)";
  }

  const sp<HidlThermalCallback> callback_ = sp<HidlThermalCallback>::make();
};

TEST_F(ThermalCallbackTest, CallbacksReceiveWhatTheyAskedForAlsoWithoutTheWrapper) {
  const auto batteries = sp<HidlThermalCallback>::make();
  const auto speakers = sp<HidlThermalCallback>::make();
  ASSERT_TRUE(Succeeded(Register(callback_, false, HidlType::BATTERY)));
  ASSERT_TRUE(Succeeded(Register(batteries, true, HidlType::BATTERY)));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallback), 1);
  // A type without a name in HIDL is passed on as its number.
  ASSERT_TRUE(Succeeded(Register(speakers, true, static_cast<HidlType>(TemperatureType::SPEAKER))));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallbackWithType), 2);
  wrapper_.clear();
  EXPECT_EQ(Calls(ThermalOperation::kUnregisterThermalChangedCallback), 0);
  thermal_.Notify(Hot("skin"));
  thermal_.Notify(Hot("battery", TemperatureType::BATTERY));
  thermal_.Notify(Hot("speaker", TemperatureType::SPEAKER));
  EXPECT_EQ(Take(*callback_), "skin");
  EXPECT_EQ(Take(*callback_), "battery");
  EXPECT_EQ(Take(*batteries), "battery");
  const auto heard = speakers->heard.Take();
  ASSERT_TRUE(heard);
  EXPECT_EQ(heard->temperature.type, HidlType::UNKNOWN);
  EXPECT_EQ(heard->temperature.name, "speaker");
  EXPECT_EQ(heard->temperature.value, 45.5F);
  EXPECT_EQ(heard->temperature.throttlingStatus, V2_0::ThrottlingSeverity::SEVERE);
  EXPECT_EQ(heard->thread, "binder:host");
}

// Two proxies of one callback in another process count as the same callback.
TEST_F(ThermalCallbackTest, CallbacksAreComparedAsInterfacesNotAsPointers) {
  constexpr char kInstance[] = "android.hardware.thermal@2.0::IThermalChangedCallback/default";
  fake::DeclareHidl(kInstance);
  fake::ServiceProcess client("client");
  ASSERT_TRUE(client.AddHidlService(callback_));
  const sp<HidlCallback> proxies[] = {HidlCallback::tryGetService(), HidlCallback::tryGetService()};
  ASSERT_NE(proxies[0], nullptr);
  ASSERT_NE(proxies[0], proxies[1]);
  EXPECT_TRUE(Succeeded(Register(proxies[0])));
  EXPECT_TRUE(FailedWith(Register(proxies[1], /*filter=*/true), kRegistered));
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallbackWithType), 0);
  ExpectNotified(*callback_);
  EXPECT_TRUE(Succeeded(Unregister(proxies[1])));
  EXPECT_EQ(registered(), 0u);
  fake::UndeclareHidl(kInstance);
}

TEST_F(ThermalCallbackTest, ARefusedCallMayBeTriedAgain) {
  thermal_.on(ThermalOperation::kRegisterThermalChangedCallback)
      .Then(Outcome::Exception(EX_ILLEGAL_STATE, "not yet"));
  EXPECT_TRUE(FailedWith(Register(callback_), "not yet"));
  EXPECT_TRUE(FailedWith(Unregister(callback_), kNotRegistered));
  EXPECT_TRUE(Succeeded(Register(callback_)));
  thermal_.on(ThermalOperation::kUnregisterThermalChangedCallback)
      .Then(Outcome::ServiceSpecific(1, "busy"));
  EXPECT_TRUE(FailedWith(Unregister(callback_), "busy"));
  EXPECT_TRUE(FailedWith(Register(callback_), kRegistered));
  EXPECT_TRUE(Succeeded(Unregister(callback_)));
  EXPECT_TRUE(FailedWith(Unregister(callback_), kNotRegistered));
  EXPECT_EQ(Calls(ThermalOperation::kUnregisterThermalChangedCallback), 2);
  thermal_.Kill(ThermalPath::kAidl);
  EXPECT_TRUE(FailedWith(Register(callback_), ""));
}

// The lock is held from the search for a duplicate to the end of the result callback.
TEST_F(ThermalCallbackTest, RegistrationsWaitForEachOther) {
  const auto service = std::make_shared<Gate>();
  thermal_.on(ThermalOperation::kRegisterThermalChangedCallback).Then(Outcome::After(service));
  Gate result;
  Background first("a registration", [&] {
    EXPECT_TRUE(wrapper_
                    ->registerThermalChangedCallback(callback_, false, HidlType::SKIN,
                                                     [&](const auto&) { result.Pass(); })
                    .isOk());
  });
  ASSERT_TRUE(service->WaitForArrivals());
  Seen<bool> refused;
  Background duplicate("a duplicate",
                       [&] { refused.Put(FailedWith(Register(callback_), kRegistered)); });
  // This can miss a bug, never invent one.
  EXPECT_FALSE(refused.Take(std::chrono::milliseconds(20)));
  service->Open();
  ASSERT_TRUE(result.WaitForArrivals());
  EXPECT_FALSE(refused.Take(std::chrono::milliseconds(20)));
  result.Open();
  EXPECT_EQ(refused.Take(), true);
  EXPECT_EQ(Calls(ThermalOperation::kRegisterThermalChangedCallback), 1);
}

TEST_F(ThermalCallbackTest, NotificationsQueriesAndRefusedNullsNeedNoLock) {
  RegisterOk(callback_);
  const auto gate = std::make_shared<Gate>();
  thermal_.on(ThermalOperation::kUnregisterThermalChangedCallback).Then(Outcome::After(gate));
  Background unregistration("an unregistration",
                            [&] { EXPECT_TRUE(Succeeded(Unregister(callback_))); });
  ASSERT_TRUE(gate->WaitForArrivals());
  EndsInTime([&] {
    ExpectNotified(*callback_);
    EXPECT_FALSE(Temperatures().empty());
    EXPECT_TRUE(FailedWith(Register(nullptr), "Invalid nullptr callback"));
    EXPECT_TRUE(FailedWith(Unregister(nullptr), "Invalid nullptr callback"));
  });
  gate->Open();
}

// A callback that reports its destruction.
class Reporting : public HidlThermalCallback {
 public:
  Reporting(Seen<std::string>& ends, const char* name) : ends_(ends), name_(name) {}
  ~Reporting() override { ends_.Put(name_); }

 private:
  Seen<std::string>& ends_;
  const char* const name_;
};

TEST_F(ThermalCallbackTest, CallbacksStayInOrderAndTheLatestIsReleasedFirst) {
  Seen<std::string> ends;
  std::vector<sp<Reporting>> callbacks;
  for (const char* name : {"first", "second", "third", "fourth"}) {
    callbacks.push_back(sp<Reporting>::make(ends, name));
    RegisterOk(callbacks.back());
  }
  ASSERT_TRUE(Succeeded(Unregister(callbacks[1])));
  EXPECT_EQ(registered(), 3u);
  thermal_.Notify(Hot("skin"));
  for (const size_t i : {0, 2, 3}) EXPECT_EQ(Take(*callbacks[i]), "skin");
  EXPECT_TRUE(callbacks[1]->heard.empty());
  // From here on only the wrapper holds the callbacks.
  thermal_.Kill(ThermalPath::kAidl);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  callbacks.clear();
  EXPECT_EQ(ends.Take(), "second");
  EXPECT_TRUE(ends.empty());
  wrapper_.clear();
  EXPECT_THAT(ends.TakeMany(3), ElementsAre("fourth", "third", "first"));
}

class Failing : public HidlThermalCallback {
 public:
  android::hardware::Return<void> notifyThrottling(const Temperature& temperature) override {
    static_cast<void>(HidlThermalCallback::notifyThrottling(temperature).isOk());
    return android::hardware::Status::fromStatusT(android::DEAD_OBJECT);
  }
};

// A service in the same process receives the result of a notification, and may notify during a
// registration.
TEST_F(ThermalCallbackTest, TheServiceIsAnsweredOkWhenACallbackFails) {
  const auto local = ndk::SharedRefBase::make<LocalThermal>(thermal_.data());
  wrapper_ = sp<ThermalHidlWrapper>::make(local);
  const auto failing = sp<Failing>::make();
  EXPECT_TRUE(Succeeded(Register(failing)));
  EXPECT_TRUE(local->notification_was_ok);
  EXPECT_EQ(Take(*failing), "early");
  // The service refuses calls with a null status.
  local->status = [] { return ndk::ScopedAStatus(nullptr); };
  EXPECT_TRUE(FailedWith(Register(callback_), ""));
  EXPECT_TRUE(FailedWith(Unregister(failing), ""));
  const std::string no_message;
  failure_ = &no_message;
  EXPECT_THAT(Temperatures(), IsEmpty());
}

}  // namespace
}  // namespace norvik::qel
