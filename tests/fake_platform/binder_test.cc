// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The rules on which the other tests depend: which objects are remote, on which thread a call runs,
// the effects of a death.
#include <aidl/android/hardware/health/BnHealth.h>
#include <aidl/android/hardware/health/BnHealthInfoCallback.h>
#include <android/binder_manager.h>
#include <android/hardware/thermal/2.0/IThermal.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "quorvel/fake/call_latency.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/log_capture.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/services/health_service.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/thermal.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

using aidl::android::hardware::health::BnHealthInfoCallback;
using aidl::android::hardware::health::HealthInfo;
using aidl::android::hardware::health::IHealth;
using aidl::android::hardware::health::IHealthInfoCallback;
using fake::Delivery;
using fake::HoldDeliveries;
using fake::LogLine;
using fake::Outcome;
using services::HealthOperation;
using services::kHealthInstance;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Eq;
using testing::Field;
using testing::MatchesRegex;

// Remembers what arrives and on which thread.
class Callback : public BnHealthInfoCallback {
 public:
  ndk::ScopedAStatus healthInfoChanged(const HealthInfo& info) override {
    threads.Put(std::this_thread::get_id());
    levels.Put(info.batteryLevel);
    return ndk::ScopedAStatus::ok();
  }
  Seen<int> levels;
  Seen<std::thread::id> threads;
};

class BinderTest : public testing::Test {
 protected:
  BinderTest() { health_.Start(); }
  ~BinderTest() override { EXPECT_TRUE(fake::WaitUntilDelivered()); }

  static ndk::SpAIBinder LookUp() {
    return ndk::SpAIBinder(AServiceManager_checkService(kHealthInstance));
  }
  static std::shared_ptr<IHealth> Proxy() { return IHealth::fromBinder(LookUp()); }

  fake::LogCapture log_;
  simulated::Health health_;
};

TEST_F(BinderTest, AServiceOfAnotherProcessIsARemoteObject) {
  const ndk::SpAIBinder binder = LookUp();
  EXPECT_TRUE(AIBinder_isRemote(binder.get()));
  EXPECT_TRUE(AIBinder_isAlive(binder.get()));
  EXPECT_EQ(LookUp(), binder) << "one AIBinder per remote object";
  const std::shared_ptr<IHealth> proxy = IHealth::fromBinder(binder);
  ASSERT_NE(proxy, nullptr);
  EXPECT_TRUE(proxy->isRemote());
  EXPECT_NE(IHealth::fromBinder(binder), proxy) << "a new proxy each time";
  EXPECT_EQ(IHealthInfoCallback::fromBinder(binder), nullptr) << "another class";
  EXPECT_EQ(IHealth::fromBinder(nullptr), nullptr);
  EXPECT_EQ(AIBinder_ping(binder.get()), STATUS_OK);
}

TEST_F(BinderTest, AServiceOfTheSameProcessIsTheObjectItself) {
  const auto service = ndk::SharedRefBase::make<services::HealthService>(HealthInfo{});
  const std::string instance = services::HealthService::makeServiceName("own");
  ASSERT_EQ(AServiceManager_addService(service->asBinder().get(), instance.c_str()), EX_NONE);
  const ndk::SpAIBinder binder(AServiceManager_getService(instance.c_str()));
  EXPECT_FALSE(AIBinder_isRemote(binder.get()));
  EXPECT_EQ(IHealth::fromBinder(binder), service);
  const ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new([](void*) {}));
  EXPECT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), nullptr), STATUS_INVALID_OPERATION);
}

TEST_F(BinderTest, LookUpsDistinguishDeclaredFromRunning) {
  const fake::ShortGetServiceWait short_wait;
  EXPECT_TRUE(AServiceManager_isDeclared(kHealthInstance));
  health_.Kill();
  EXPECT_TRUE(AServiceManager_isDeclared(kHealthInstance));
  EXPECT_EQ(AServiceManager_checkService(kHealthInstance), nullptr);
  EXPECT_EQ(AServiceManager_getService(kHealthInstance), nullptr);
  EXPECT_THAT(log_.Lines("ServiceManagerCppClient"),
              Contains(LogLine{
                  ANDROID_LOG_WARN, "ServiceManagerCppClient",
                  "Service " + std::string(kHealthInstance) + " didn't start. Returning NULL"}));
  std::vector<std::string> declared;
  AServiceManager_forEachDeclaredInstance(
      IHealth::descriptor, &declared, [](const char* instance, void* context) {
        static_cast<std::vector<std::string>*>(context)->push_back(instance);
      });
  EXPECT_THAT(declared, ElementsAre("default"));
  health_.Undeclare();
  EXPECT_FALSE(AServiceManager_isDeclared(kHealthInstance));
  for (const auto look_up : {AServiceManager_checkService, AServiceManager_waitForService}) {
    EXPECT_EQ(look_up(nullptr), nullptr);
  }
  EXPECT_FALSE(AServiceManager_isDeclared(nullptr));
  EXPECT_EQ(AServiceManager_addService(nullptr, "x"), EX_ILLEGAL_ARGUMENT);

  Seen<bool> found;
  std::thread waiter([&] {
    found.Put(ndk::SpAIBinder(AServiceManager_waitForService(kHealthInstance)).get() != nullptr);
  });
  health_.Start();
  EXPECT_EQ(found.Take(), true);
  waiter.join();
}

TEST_F(BinderTest, GetServicePollsForALateService) {
  health_.Kill();
  fake::SetGetServiceWait(std::chrono::milliseconds(1), 1'000'000);
  Seen<bool> found;
  std::thread waiter([&] {
    found.Put(ndk::SpAIBinder(AServiceManager_getService(kHealthInstance)).get() != nullptr);
  });
  const std::string waiting =
      "Waiting for service '" + std::string(kHealthInstance) + "' on '/dev/binder'";
  ASSERT_TRUE(log_.WaitFor(waiting + "..."));
  health_.Start();
  EXPECT_EQ(found.Take(), true);
  waiter.join();
  fake::SetGetServiceWait(std::chrono::seconds(1), 5);
  const auto line = [](int priority, const auto& text) {
    return AllOf(Field(&LogLine::priority, priority), Field(&LogLine::text, text));
  };
  EXPECT_THAT(log_.Lines("ServiceManagerCppClient"),
              ElementsAre(line(ANDROID_LOG_INFO, Eq(waiting + "...")),
                          line(ANDROID_LOG_INFO,
                               MatchesRegex(waiting + " successful after waiting [0-9]+ms"))));
}

TEST_F(BinderTest, ACallRunsInTheServiceAndCarriesItsResultBack) {
  const std::shared_ptr<IHealth> proxy = Proxy();
  int32_t capacity = -7;
  EXPECT_TRUE(proxy->getCapacity(&capacity).isOk());
  EXPECT_EQ(capacity, 50);
  std::vector<aidl::android::hardware::health::StorageInfo> storage(3);
  EXPECT_TRUE(proxy->getStorageInfo(&storage).isOk());
  EXPECT_TRUE(storage.empty()) << "replaced, not appended to";
  int32_t version = 0;
  EXPECT_TRUE(proxy->getInterfaceVersion(&version).isOk());
  EXPECT_EQ(version, 3);

  health_.on(HealthOperation::kGetCapacity).Then(Outcome::Exception(EX_ILLEGAL_STATE, "not now"));
  capacity = -7;
  const ndk::ScopedAStatus refused = proxy->getCapacity(&capacity);
  EXPECT_EQ(refused.getExceptionCode(), EX_ILLEGAL_STATE);
  EXPECT_STREQ(refused.getMessage(), "not now");
  EXPECT_EQ(refused.getDescription(), "Status(-5, EX_ILLEGAL_STATE): 'not now'");

  int pipe_ends[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  EXPECT_EQ(proxy->dump(pipe_ends[1], nullptr, 0), STATUS_OK);
  close(pipe_ends[1]);
  char text[16] = {};
  EXPECT_GT(read(pipe_ends[0], text, 12), 0);
  EXPECT_STREQ(text, "callbacks: 0");
  close(pipe_ends[0]);
}

TEST_F(BinderTest, ANullInterfaceReachesTheService) {
  const std::shared_ptr<IHealth> proxy = Proxy();
  const auto callback = ndk::SharedRefBase::make<Callback>();
  ASSERT_TRUE(proxy->registerCallback(callback).isOk());
  const ndk::ScopedAStatus added = proxy->registerCallback(nullptr);
  EXPECT_EQ(added.getServiceSpecificError(), IHealth::STATUS_UNKNOWN);
  EXPECT_STREQ(added.getMessage(), "the callback is null");
  const ndk::ScopedAStatus removed = proxy->unregisterCallback(nullptr);
  EXPECT_EQ(removed.getExceptionCode(), EX_ILLEGAL_ARGUMENT);
  EXPECT_STREQ(removed.getMessage(), "the callback is null");
  EXPECT_EQ(health_.on(HealthOperation::kRegisterCallback).calls(), 2);
  EXPECT_EQ(health_.on(HealthOperation::kUnregisterCallback).calls(), 1);
  EXPECT_EQ(health_.callback_count(), 1u);
  health_.SetLevel(49);
  EXPECT_EQ(callback->levels.Take(), 50);
  EXPECT_EQ(callback->levels.Take(), 49) << "the service continues";
}

TEST_F(BinderTest, TheDefaultImplementationAnswersUnknownTransactions) {
  const auto stand_by =
      ndk::SharedRefBase::make<services::HealthService>(HealthInfo{.batteryLevel = 12});
  EXPECT_TRUE(IHealth::setDefaultImpl(stand_by));
  EXPECT_FALSE(IHealth::setDefaultImpl(nullptr));
  EXPECT_EQ(IHealth::getDefaultImpl(), stand_by);
  health_.on(HealthOperation::kGetCapacity).Then({.status = STATUS_UNKNOWN_TRANSACTION});
  int32_t capacity = -7;
  EXPECT_TRUE(Proxy()->getCapacity(&capacity).isOk());
  EXPECT_EQ(capacity, 12);
  EXPECT_TRUE(Proxy()->getCapacity(&capacity).isOk());
  EXPECT_EQ(capacity, 50);
}

TEST_F(BinderTest, BindersKnowTheirClassAndTheirData) {
  const auto callback = ndk::SharedRefBase::make<Callback>();
  const ndk::SpAIBinder local = callback->asBinder();
  const AIBinder_Class* clazz = AIBinder_getClass(local.get());
  ASSERT_NE(clazz, nullptr);
  EXPECT_STREQ(AIBinder_Class_getDescriptor(clazz), IHealthInfoCallback::descriptor);
  void* const data = AIBinder_getUserData(local.get());
  EXPECT_NE(data, nullptr);
  EXPECT_EQ(AIBinder_getUserData(callback->asBinder().get()), data) << "the same binder";
  EXPECT_NE(AIBinder_getUserData(ndk::SharedRefBase::make<Callback>()->asBinder().get()), data);

  const ndk::SpAIBinder remote = LookUp();
  EXPECT_EQ(AIBinder_getUserData(remote.get()), nullptr);
  EXPECT_EQ(AIBinder_getClass(remote.get()), nullptr) << "not associated yet";
  EXPECT_EQ(IHealthInfoCallback::fromBinder(remote), nullptr);
  EXPECT_EQ(AIBinder_getClass(remote.get()), nullptr) << "nor by an attempt that failed";
  ASSERT_NE(IHealth::fromBinder(remote), nullptr);
  EXPECT_STREQ(AIBinder_Class_getDescriptor(AIBinder_getClass(remote.get())), IHealth::descriptor);
  EXPECT_EQ(AIBinder_getClass(nullptr), nullptr);
  EXPECT_EQ(AIBinder_getUserData(nullptr), nullptr);
}

TEST_F(BinderTest, ACallOfEitherKindTakesAtLeastTheSimulatedLatency) {
  using HidlThermal = android::hardware::thermal::V2_0::IThermal;
  using simulated::ThermalPath;
  constexpr std::chrono::milliseconds kLatency(20);
  simulated::Thermal thermal;
  thermal.Declare(ThermalPath::kHidl);
  thermal.Start(ThermalPath::kHidl);
  const std::shared_ptr<IHealth> aidl = Proxy();
  const android::sp<HidlThermal> hidl = HidlThermal::tryGetService();
  ASSERT_NE(hidl, nullptr);
  const auto duration_of = [](const auto& call) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(call().isOk());
    return std::chrono::steady_clock::now() - begin;
  };
  int32_t capacity = 0;
  const fake::CallLatency latency(kLatency);
  EXPECT_GE(duration_of([&] { return aidl->getCapacity(&capacity); }), kLatency);
  EXPECT_EQ(capacity, 50) << "and is made";
  EXPECT_GE(duration_of([&] { return hidl->ping(); }), kLatency);
}

TEST_F(BinderTest, ADeathFailsCallsUnderWayAndLaterOnes) {
  const std::shared_ptr<IHealth> proxy = Proxy();
  const ndk::SpAIBinder never_asked = LookUp();
  auto gate = std::make_shared<fake::Gate>();
  health_.on(HealthOperation::kGetCapacity).Then(Outcome::After(gate));
  int32_t capacity = -7;
  ndk::ScopedAStatus status;
  std::thread caller([&] { status = proxy->getCapacity(&capacity); });
  ASSERT_TRUE(gate->WaitForArrivals());
  health_.Kill();
  caller.join();
  EXPECT_EQ(status.getExceptionCode(), EX_TRANSACTION_FAILED);
  EXPECT_EQ(status.getStatus(), STATUS_DEAD_OBJECT);
  EXPECT_STREQ(status.getMessage(), "");
  EXPECT_EQ(capacity, -7);
  EXPECT_FALSE(AIBinder_isAlive(proxy->asBinder().get()));
  EXPECT_EQ(AIBinder_ping(proxy->asBinder().get()), STATUS_DEAD_OBJECT);

  health_.Start();
  EXPECT_EQ(proxy->getCapacity(&capacity).getStatus(), STATUS_DEAD_OBJECT)
      << "a restarted service is another object";
  EXPECT_NE(LookUp(), proxy->asBinder());
  EXPECT_TRUE(Proxy()->getCapacity(&capacity).isOk());
}

TEST_F(BinderTest, ADeadServiceThatWasNeverCalledHasNoClass) {
  const ndk::SpAIBinder binder = LookUp();
  health_.Kill();
  EXPECT_EQ(IHealth::fromBinder(binder), nullptr);
}

TEST_F(BinderTest, OnewayCallsArriveInOrderOnAThreadOfTheirOwn) {
  const auto callback = ndk::SharedRefBase::make<Callback>();
  const auto other = ndk::SharedRefBase::make<Callback>();
  const std::shared_ptr<IHealth> proxy = Proxy();
  {
    // A sender does not wait, even while nothing is delivered.
    HoldDeliveries hold(Delivery::kOneway);
    ASSERT_TRUE(proxy->registerCallback(callback).isOk());
    ASSERT_TRUE(proxy->registerCallback(other).isOk());
    for (int level = 0; level < 20; ++level) health_.SetLevel(level);
    EXPECT_TRUE(hold.WaitForHeld(2)) << "calls to different objects run side by side";
    EXPECT_TRUE(callback->levels.empty());
  }
  EXPECT_EQ(callback->levels.Take(), 50) << "sent from inside the registration";
  for (int level = 0; level < 20; ++level) {
    EXPECT_EQ(callback->levels.Take(), level);
  }
  EXPECT_NE(callback->threads.Take(), std::this_thread::get_id());
}

TEST_F(BinderTest, AServiceHoldsACallbackUntilItIsUnregisteredOrTheServiceDies) {
  for (const bool dies : {false, true}) {
    health_.Start();
    const std::shared_ptr<IHealth> proxy = Proxy();
    auto callback = ndk::SharedRefBase::make<Callback>();
    const std::weak_ptr<Callback> kept = callback;
    ASSERT_TRUE(proxy->registerCallback(callback).isOk());
    ASSERT_TRUE(proxy->registerCallback(callback).isOk());
    EXPECT_EQ(health_.callback_count(), 2u) << "duplicates are kept";
    ASSERT_TRUE(fake::WaitUntilDelivered());
    if (dies) {
      callback.reset();
      EXPECT_FALSE(kept.expired());
      health_.Kill();
    } else {
      EXPECT_TRUE(proxy->unregisterCallback(callback).isOk());
      EXPECT_EQ(health_.callback_count(), 0u) << "and go together";
      EXPECT_EQ(proxy->unregisterCallback(callback).getExceptionCode(), EX_ILLEGAL_ARGUMENT);
      callback.reset();
    }
    EXPECT_TRUE(Eventually([&] { return kept.expired(); })) << "dies: " << dies;
  }
}

TEST_F(BinderTest, TheSimulatedPhoneKeepsWhatAClientSets) {
  using aidl::android::hardware::health::BatteryChargingPolicy;
  const auto callback = ndk::SharedRefBase::make<Callback>();
  std::shared_ptr<IHealth> proxy = Proxy();
  ASSERT_TRUE(proxy->registerCallback(callback).isOk());
  ASSERT_EQ(callback->levels.Take(), 50);
  ASSERT_TRUE(proxy->setChargingPolicy(BatteryChargingPolicy::LONG_LIFE).isOk());
  EXPECT_EQ(callback->levels.Take(), 50) << "a change is reported";
  EXPECT_TRUE(proxy->update().isOk());
  EXPECT_EQ(callback->levels.Take(), 50) << "and so is the answer to update()";
  health_.SetLevel(49);
  health_.Start();
  BatteryChargingPolicy policy = BatteryChargingPolicy::INVALID;
  EXPECT_TRUE(Proxy()->getChargingPolicy(&policy).isOk());
  EXPECT_EQ(policy, BatteryChargingPolicy::LONG_LIFE);
}

TEST_F(BinderTest, StrongReferencesAreCounted) {
  AIBinder* raw = AServiceManager_checkService(kHealthInstance);
  EXPECT_EQ(AIBinder_debugGetRefCount(raw), 1) << "a look-up hands over one reference";
  ndk::SpAIBinder adopted(raw);
  EXPECT_EQ(AIBinder_debugGetRefCount(raw), 1);
  {
    const ndk::SpAIBinder copy = adopted;
    EXPECT_EQ(AIBinder_debugGetRefCount(raw), 2);
  }
  const ndk::ScopedAIBinder_Weak weak(AIBinder_Weak_new(raw));
  EXPECT_EQ(weak.promote(), adopted);
  adopted.set(nullptr);
  EXPECT_EQ(weak.promote().get(), nullptr);
  EXPECT_EQ(AIBinder_debugGetRefCount(nullptr), -1);
  EXPECT_FALSE(AIBinder_isRemote(nullptr));
  EXPECT_FALSE(AIBinder_isAlive(nullptr));
  EXPECT_EQ(AIBinder_ping(nullptr), STATUS_UNEXPECTED_NULL);
}

template <typename T>
concept MadeByNew = requires {
  new T;
};
template <typename T>
concept MadeByMakeShared = requires {
  std::make_shared<T>();
};
template <typename T>
concept MadeByMakeUnique = requires {
  std::make_unique<T>();
};

TEST(SharedRefBaseTest, LivesInSharedPointersOnly) {
  static_assert(MadeByNew<std::string> && MadeByMakeShared<std::string> &&
                MadeByMakeUnique<std::string>);
  static_assert(!MadeByNew<Callback> && !MadeByMakeShared<Callback> && !MadeByMakeUnique<Callback>);
  EXPECT_DEATH({ Callback never_referenced; }, "");
  const auto callback = ndk::SharedRefBase::make<Callback>();
  EXPECT_EQ(callback->ref<Callback>(), callback);
}

// Counts what one link brings. Each notification waits at a gate if there is one.
struct Counter {
  std::atomic<int> died{0};
  std::atomic<int> unlinked{0};
  fake::Gate* gate = nullptr;

  static void OnDied(void* cookie) {
    auto* self = static_cast<Counter*>(cookie);
    if (self->gate != nullptr) self->gate->Pass();
    ++self->died;
  }
  static void OnUnlinked(void* cookie) { ++static_cast<Counter*>(cookie)->unlinked; }
};

class DeathNotificationTest : public BinderTest {
 protected:
  DeathNotificationTest() {
    AIBinder_DeathRecipient_setOnUnlinked(recipient(), Counter::OnUnlinked);
  }

  AIBinder_DeathRecipient* recipient() { return recipient_.get(); }
  binder_status_t Link(Counter& counter) {
    return AIBinder_linkToDeath(binder_.get(), recipient(), &counter);
  }
  binder_status_t Unlink(Counter& counter) {
    return AIBinder_unlinkToDeath(binder_.get(), recipient(), &counter);
  }
  void KillAndTell() {
    health_.Kill();
    ASSERT_TRUE(fake::WaitUntilDelivered());
  }

  ndk::SpAIBinder binder_ = LookUp();
  ndk::ScopedAIBinder_DeathRecipient recipient_{AIBinder_DeathRecipient_new(Counter::OnDied)};
};

TEST_F(DeathNotificationTest, EachLinkIsNotifiedOnce) {
  Counter once;
  Counter twice;
  ASSERT_EQ(Link(once), STATUS_OK);
  ASSERT_EQ(Link(twice), STATUS_OK);
  ASSERT_EQ(Link(twice), STATUS_OK);
  KillAndTell();
  health_.Start();
  KillAndTell();  // the old links do not belong to the new service
  EXPECT_EQ(once.died, 1);
  EXPECT_EQ(once.unlinked, 1);
  EXPECT_EQ(twice.died, 2);
  EXPECT_EQ(twice.unlinked, 2);
  EXPECT_EQ(Unlink(once), STATUS_NAME_NOT_FOUND) << "gone with its notification";
  EXPECT_EQ(Link(once), STATUS_DEAD_OBJECT) << "known to be dead";
  EXPECT_EQ(once.unlinked, 2) << "a link call that fails gives the cookie back, too";
}

TEST_F(DeathNotificationTest, ALinkThatHasEndedNotifiesNoRecipient) {
  Counter undone;
  Counter deleted;
  Counter dropped;
  ndk::ScopedAIBinder_DeathRecipient other(AIBinder_DeathRecipient_new(Counter::OnDied));
  AIBinder_DeathRecipient_setOnUnlinked(other.get(), Counter::OnUnlinked);
  ASSERT_EQ(Link(undone), STATUS_OK);
  ASSERT_EQ(AIBinder_linkToDeath(binder_.get(), other.get(), &deleted), STATUS_OK);
  ASSERT_EQ(Link(dropped), STATUS_OK);
  EXPECT_EQ(Unlink(deleted), STATUS_NAME_NOT_FOUND) << "linked by another recipient";
  EXPECT_EQ(Unlink(undone), STATUS_OK);
  EXPECT_EQ(Unlink(undone), STATUS_NAME_NOT_FOUND);
  other.set(nullptr);
  binder_.set(nullptr);
  for (const Counter* counter : {&undone, &deleted, &dropped}) EXPECT_EQ(counter->unlinked, 1);
  KillAndTell();
  for (const Counter* counter : {&undone, &deleted, &dropped}) EXPECT_EQ(counter->died, 0);
}

TEST_F(DeathNotificationTest, UnlinkingDoesNotWaitForARunningNotification) {
  fake::Gate gate;
  Counter counter;
  counter.gate = &gate;
  ASSERT_EQ(Link(counter), STATUS_OK);
  health_.Kill();
  ASSERT_TRUE(gate.WaitForArrivals());
  EXPECT_EQ(Unlink(counter), STATUS_DEAD_OBJECT);
  EXPECT_EQ(Unlink(counter), STATUS_NAME_NOT_FOUND);
  recipient_.set(nullptr);
  binder_.set(nullptr);
  EXPECT_EQ(counter.unlinked, 0) << "the notification still has the cookie";
  gate.Open();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(counter.died, 1);
  EXPECT_EQ(counter.unlinked, 1);
}

TEST_F(DeathNotificationTest, ALinkToADeadServiceIsNotified) {
  health_.Kill();
  Counter counter;
  EXPECT_EQ(Link(counter), STATUS_OK);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(counter.died, 1);
}

TEST_F(DeathNotificationTest, RecipientsOfOneProxyAreNotifiedOneAfterAnother) {
  fake::Gate gate;
  Counter first;
  Counter second;
  first.gate = &gate;
  ASSERT_EQ(Link(first), STATUS_OK);
  ASSERT_EQ(Link(second), STATUS_OK);
  health_.Kill();
  ASSERT_TRUE(gate.WaitForArrivals());
  EXPECT_EQ(second.died, 0);
  EXPECT_EQ(Unlink(second), STATUS_DEAD_OBJECT) << "delivery has begun for the proxy";
  gate.Open();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(first.died, 1);
  EXPECT_EQ(second.died, 0) << "its notification had not started";
  EXPECT_EQ(second.unlinked, 1);
}

TEST_F(DeathNotificationTest, QueuedReportsComeAfterTheDeathNotificationAndBeforeTheSuccessors) {
  constexpr int kDied = -1;
  const auto callback = ndk::SharedRefBase::make<Callback>();
  Seen<int>& order = callback->levels;
  const auto other = ndk::SharedRefBase::make<Callback>();
  const ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(
      [](void* cookie) { static_cast<Seen<int>*>(cookie)->Put(kDied); }));
  ASSERT_TRUE(Proxy()->registerCallback(callback).isOk());
  ASSERT_EQ(order.Take(), 50);
  ASSERT_EQ(AIBinder_linkToDeath(binder_.get(), recipient.get(), &order), STATUS_OK);
  HoldDeliveries notifications(Delivery::kDeathNotification);
  {
    HoldDeliveries reports(Delivery::kOneway);
    for (const int level : {1, 2, 3}) health_.SetLevel(level);
    ASSERT_TRUE(reports.WaitForHeld());
    health_.Kill();
    ASSERT_TRUE(notifications.WaitForHeld());
    health_.SetLevel(4);
    health_.Start();
    ASSERT_TRUE(Proxy()->registerCallback(callback).isOk());
    ASSERT_TRUE(Proxy()->registerCallback(other).isOk());
  }
  EXPECT_EQ(other->levels.Take(), 4) << "objects do not wait for each other";
  EXPECT_TRUE(order.empty()) << "the notification has not been given";
  notifications.Release();
  for (const int next : {kDied, 1, 2, 3, 4}) {
    EXPECT_EQ(order.Take(), next);
  }
}

TEST_F(DeathNotificationTest, QueuedReportsDoNotWaitForACancelledNotification) {
  const auto callback = ndk::SharedRefBase::make<Callback>();
  ASSERT_TRUE(Proxy()->registerCallback(callback).isOk());
  ASSERT_EQ(callback->levels.Take(), 50);
  Counter undone;
  Counter dropped;
  ASSERT_EQ(Link(undone), STATUS_OK);
  ASSERT_EQ(Link(dropped), STATUS_OK);
  ASSERT_EQ(Unlink(undone), STATUS_OK);
  {
    HoldDeliveries reports(Delivery::kOneway);
    health_.SetLevel(1);
    ASSERT_TRUE(reports.WaitForHeld());
    binder_.set(nullptr);
    health_.Kill();
  }
  EXPECT_EQ(callback->levels.Take(), 1);
  EXPECT_EQ(undone.died, 0);
  EXPECT_EQ(dropped.died, 0);
}

TEST_F(DeathNotificationTest, NullsAndMissingHooks) {
  Counter counter;
  EXPECT_EQ(AIBinder_DeathRecipient_new(nullptr), nullptr);
  EXPECT_EQ(AIBinder_linkToDeath(nullptr, recipient(), &counter), STATUS_UNEXPECTED_NULL);
  EXPECT_EQ(AIBinder_linkToDeath(binder_.get(), nullptr, &counter), STATUS_UNEXPECTED_NULL);
  EXPECT_EQ(AIBinder_unlinkToDeath(nullptr, recipient(), &counter), STATUS_UNEXPECTED_NULL);
  AIBinder_DeathRecipient_delete(nullptr);
  EXPECT_TRUE(log_.Lines("libbinder_ndk").size() == 1);  // the null function, no more
  const ndk::ScopedAIBinder_DeathRecipient unhooked(AIBinder_DeathRecipient_new(Counter::OnDied));
  ASSERT_EQ(AIBinder_linkToDeath(binder_.get(), unhooked.get(), &counter), STATUS_OK);
  EXPECT_EQ(log_.Lines("libbinder_ndk").size(), 2u) << "a cookie without a hook is warned of";
}

TEST(ScriptTest, AnEndedServiceTakesNoOutcomes) {
  fake::Script script;
  script.Then({.status = STATUS_UNKNOWN_ERROR});
  std::atomic<bool> ended{true};
  EXPECT_EQ(script.Next(&ended).status, STATUS_DEAD_OBJECT);
  EXPECT_EQ(script.calls(), 0);
  ended = false;
  EXPECT_EQ(script.Next(&ended).status, STATUS_UNKNOWN_ERROR);
}

}  // namespace
}  // namespace norvik::qel
