// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The rules of binder that the other tests depend on: which objects are remote, on which thread a
// call runs, and the effects of a death.
#include <aidl/android/hardware/health/BnHealth.h>
#include <aidl/android/hardware/health/BnHealthInfoCallback.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "process_state.h"
#include "quorvel/fake/call_latency.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/log_capture.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/fake/service_process.h"
#include "quorvel/services/health_service.h"
#include "quorvel/simulated/health.h"
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
using testing::ElementsAre;
using testing::Field;
using testing::MatchesRegex;

// A callback that keeps the reports and the threads that delivered them.
class Callback : public BnHealthInfoCallback {
 public:
  ndk::ScopedAStatus healthInfoChanged(const HealthInfo& info) override {
    threads.Put(ThreadName());
    levels.Put(info.batteryLevel);
    return ndk::ScopedAStatus::ok();
  }
  Seen<int> levels;
  Seen<std::string> threads;
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
  ndk::SpAIBinder binder = LookUp();
  EXPECT_EQ(AIBinder_debugGetRefCount(binder.get()), 1) << "a look-up hands over one reference";
  EXPECT_TRUE(AIBinder_isRemote(binder.get()));
  EXPECT_TRUE(AIBinder_isAlive(binder.get()));
  EXPECT_EQ(AIBinder_ping(binder.get()), STATUS_OK);
  EXPECT_EQ(LookUp(), binder) << "one AIBinder per remote object";
  EXPECT_EQ(IHealthInfoCallback::fromBinder(binder), nullptr) << "another class";
  const std::shared_ptr<IHealth> proxy = IHealth::fromBinder(binder);
  ASSERT_NE(proxy, nullptr);
  EXPECT_TRUE(proxy->isRemote());
  EXPECT_NE(IHealth::fromBinder(binder), proxy) << "a new proxy each time";

  health_.Start();
  binder = LookUp();
  health_.Kill();
  EXPECT_EQ(IHealth::fromBinder(binder), nullptr) << "its class was never asked for";
}

TEST_F(BinderTest, AServiceOfTheSameProcessIsTheObjectItself) {
  const auto service = ndk::SharedRefBase::make<services::HealthService>(HealthInfo{});
  const std::string instance = services::HealthService::makeServiceName("own");
  ASSERT_EQ(AServiceManager_addService(service->asBinder().get(), instance.c_str()), EX_NONE);
  const ndk::SpAIBinder binder(AServiceManager_checkService(instance.c_str()));
  EXPECT_FALSE(AIBinder_isRemote(binder.get()));
  EXPECT_EQ(IHealth::fromBinder(binder), service);
  const ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new([](void*) {}));
  EXPECT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), nullptr), STATUS_INVALID_OPERATION);
}

TEST_F(BinderTest, GetServicePollsForALateServiceUntilItsWaitIsOver) {
  const std::string waiting =
      "Waiting for service '" + std::string(kHealthInstance) + "' on '/dev/binder'";
  const auto finds = [] {
    return ndk::SpAIBinder(AServiceManager_getService(kHealthInstance)).get() != nullptr;
  };
  health_.Kill();
  fake::SetGetServiceWait(std::chrono::milliseconds(1), 1'000'000);
  std::future<bool> found = std::async(std::launch::async, finds);
  EXPECT_TRUE(log_.WaitFor(waiting + "..."));
  health_.Start();
  EXPECT_TRUE(found.get());
  fake::SetGetServiceWait(std::chrono::seconds(1), 5);
  health_.Kill();
  const fake::ShortGetServiceWait short_wait;
  EXPECT_FALSE(finds());
  const auto line = [](int priority, const std::string& text) {
    return AllOf(Field(&LogLine::priority, priority), Field(&LogLine::text, MatchesRegex(text)));
  };
  EXPECT_THAT(log_.Lines("ServiceManagerCppClient"),
              ElementsAre(line(ANDROID_LOG_INFO, waiting + "\\.\\.\\."),
                          line(ANDROID_LOG_INFO, waiting + " successful after waiting [0-9]+ms"),
                          line(ANDROID_LOG_INFO, waiting + "\\.\\.\\."),
                          line(ANDROID_LOG_WARN, "Service .* didn't start. Returning NULL")));
}

TEST_F(BinderTest, ACallCarriesTheResultBackAfterTheSimulatedLatency) {
  const std::shared_ptr<IHealth> proxy = Proxy();
  std::vector<aidl::android::hardware::health::StorageInfo> storage(3);
  EXPECT_TRUE(proxy->getStorageInfo(&storage).isOk());
  EXPECT_TRUE(storage.empty()) << "replaced, not appended to";

  health_.on(HealthOperation::kGetCapacity).Then(Outcome::Exception(EX_ILLEGAL_STATE, "not now"));
  int32_t capacity = -7;
  const ndk::ScopedAStatus refused = proxy->getCapacity(&capacity);
  EXPECT_EQ(refused.getDescription(), "Status(-5, EX_ILLEGAL_STATE): 'not now'");

  constexpr std::chrono::milliseconds kLatency(20);
  const fake::CallLatency latency(kLatency);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(proxy->getCapacity(&capacity).isOk());
  EXPECT_EQ(capacity, 50);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, kLatency);
}

TEST_F(BinderTest, ADeathFailsCallsUnderWayAndLaterOnes) {
  const std::shared_ptr<IHealth> proxy = Proxy();
  auto gate = std::make_shared<fake::Gate>();
  health_.on(HealthOperation::kGetCapacity).Then(Outcome::After(gate));
  int32_t capacity = -7;
  ndk::ScopedAStatus status;
  std::thread caller([&] { status = proxy->getCapacity(&capacity); });
  ASSERT_TRUE(gate->WaitForArrivals());
  health_.Kill();
  caller.join();
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

TEST_F(BinderTest, OnewayCallsArriveInOrderOnAThreadOfTheirOwn) {
  const auto callback = ndk::SharedRefBase::make<Callback>();
  const auto other = ndk::SharedRefBase::make<Callback>();
  const std::shared_ptr<IHealth> proxy = Proxy();
  std::vector<int> sent = {50};  // the first report is sent during the registration
  {
    // A one-way call returns even while deliveries are held.
    HoldDeliveries hold(Delivery::kOneway);
    ASSERT_TRUE(proxy->registerCallback(callback).isOk());
    ASSERT_TRUE(proxy->registerCallback(other).isOk());
    for (int level = 0; level < 20; ++level) {
      health_.SetLevel(level);
      sent.push_back(level);
    }
    EXPECT_TRUE(hold.WaitForHeld(2)) << "calls to different objects run side by side";
    EXPECT_TRUE(callback->levels.empty());
    EXPECT_TRUE(proxy->unregisterCallback(callback).isOk());
  }
  EXPECT_EQ(callback->levels.TakeMany(sent.size()), sent) << "those before the unregistration";
  EXPECT_EQ(callback->threads.Take(), "binder:host");
}

TEST_F(BinderTest, AServiceThatLivesOnHoldsACallbackUntilItsUnregistrationOrItsProcessesDeath) {
  const auto service = ndk::SharedRefBase::make<services::HealthService>(HealthInfo{});
  const std::string instance = services::HealthService::makeServiceName("other");
  fake::ServiceProcess process("other");
  ASSERT_TRUE(process.AddService(service, instance));
  const ndk::SpAIBinder binder(AServiceManager_checkService(instance.c_str()));
  const std::shared_ptr<IHealth> proxy = IHealth::fromBinder(binder);
  for (const bool dies : {false, true}) {
    auto callback = ndk::SharedRefBase::make<Callback>();
    const std::weak_ptr<Callback> kept = callback;
    for (int i = 0; i < 2; ++i) ASSERT_TRUE(proxy->registerCallback(callback).isOk());
    ASSERT_TRUE(fake::WaitUntilDelivered());
    EXPECT_TRUE(dies || proxy->unregisterCallback(callback).isOk()) << "both at once";
    callback.reset();
    if (dies) {
      EXPECT_FALSE(kept.expired());
      process.Kill();
    }
    EXPECT_TRUE(Eventually([&] { return kept.expired(); })) << "dies: " << dies;
  }
}

template <typename T>
concept MadeByNew = requires {
  new T;
};
template <typename T>
concept MadeByMakeShared = requires {
  std::make_shared<T>();
};

TEST(SharedRefBaseTest, LivesInSharedPointersOnly) {
  static_assert(!MadeByNew<Callback> && !MadeByMakeShared<Callback>);
  EXPECT_DEATH({ Callback never_referenced; }, "");
  const auto callback = ndk::SharedRefBase::make<Callback>();
  EXPECT_EQ(callback->ref<Callback>(), callback);
}

TEST_F(BinderTest, NullsReachTheServiceAndMisusedRecipientsAreLogged) {
  EXPECT_STREQ(Proxy()->registerCallback(nullptr).getMessage(), "the callback is null");
  EXPECT_STREQ(Proxy()->unregisterCallback(nullptr).getMessage(), "the callback is null");
  EXPECT_EQ(AIBinder_DeathRecipient_new(nullptr), nullptr);
  EXPECT_THAT(log_.Lines("libbinder_ndk"), testing::SizeIs(1));
  const ndk::ScopedAIBinder_DeathRecipient unhooked(AIBinder_DeathRecipient_new([](void*) {}));
  ASSERT_EQ(AIBinder_linkToDeath(LookUp().get(), unhooked.get(), this), STATUS_OK);
  EXPECT_THAT(log_.Lines("libbinder_ndk"), testing::SizeIs(2)) << "a cookie without a hook";
}

// The cookie of a link: counts its death and unlink notifications. Each death notification waits at
// the gate, if there is one.
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
    AIBinder_DeathRecipient_setOnUnlinked(recipient_.get(), Counter::OnUnlinked);
  }

  binder_status_t Link(Counter& counter) {
    return AIBinder_linkToDeath(binder_.get(), recipient_.get(), &counter);
  }
  binder_status_t Unlink(Counter& counter) {
    return AIBinder_unlinkToDeath(binder_.get(), recipient_.get(), &counter);
  }
  void KillAndTell() {
    health_.Kill();
    ASSERT_TRUE(fake::WaitUntilDelivered());
  }

  ndk::SpAIBinder binder_ = LookUp();
  ndk::ScopedAIBinder_DeathRecipient recipient_{AIBinder_DeathRecipient_new(Counter::OnDied)};
};

TEST_F(DeathNotificationTest, EachLinkIsNotifiedOnce) {
  Counter counter;
  for (int i = 0; i < 2; ++i) ASSERT_EQ(Link(counter), STATUS_OK);
  KillAndTell();
  health_.Start();
  KillAndTell();  // the old links do not belong to the new service
  EXPECT_EQ(counter.died, 2);
  EXPECT_EQ(counter.unlinked, 2);
  EXPECT_EQ(Unlink(counter), STATUS_NAME_NOT_FOUND) << "gone with its notification";
  EXPECT_EQ(Link(counter), STATUS_DEAD_OBJECT) << "known to be dead";
  EXPECT_EQ(counter.unlinked, 3) << "a link call that fails gives the cookie back, too";
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

TEST_F(DeathNotificationTest, RecipientsAreNotifiedOneAfterAnotherAndUnlinkingDoesNotWait) {
  fake::Gate gate;
  Counter first;
  Counter second;
  first.gate = &gate;
  ASSERT_EQ(Link(first), STATUS_OK);
  ASSERT_EQ(Link(second), STATUS_OK);
  health_.Kill();
  ASSERT_TRUE(gate.WaitForArrivals());
  for (Counter* counter : {&first, &second}) {
    EXPECT_EQ(Unlink(*counter), STATUS_DEAD_OBJECT) << "delivery has begun for the proxy";
    EXPECT_EQ(Unlink(*counter), STATUS_NAME_NOT_FOUND);
  }
  recipient_.set(nullptr);
  binder_.set(nullptr);
  EXPECT_EQ(first.unlinked, 0) << "the notification still has the cookie";
  EXPECT_EQ(second.unlinked, 1);
  gate.Open();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(first.died, 1);
  EXPECT_EQ(first.unlinked, 1);
  EXPECT_EQ(second.died, 0) << "its notification had not started";
}

TEST_F(DeathNotificationTest, QueuedReportsComeAfterTheDeathNotificationAndBeforeTheSuccessors) {
  const auto callback = ndk::SharedRefBase::make<Callback>();
  const auto other = ndk::SharedRefBase::make<Callback>();
  ASSERT_TRUE(Proxy()->registerCallback(callback).isOk());
  ASSERT_EQ(callback->levels.Take(), 50);
  fake::Gate gate;
  Counter counter;
  counter.gate = &gate;
  ASSERT_EQ(Link(counter), STATUS_OK);
  {
    HoldDeliveries reports(Delivery::kOneway);
    for (const int level : {1, 2, 3}) health_.SetLevel(level);
    ASSERT_TRUE(reports.WaitForHeld());
    health_.Kill();
    ASSERT_TRUE(gate.WaitForArrivals());
    health_.SetLevel(4);
    health_.Start();
    ASSERT_TRUE(Proxy()->registerCallback(callback).isOk());
    ASSERT_TRUE(Proxy()->registerCallback(other).isOk());
  }
  EXPECT_EQ(other->levels.Take(), 4) << "objects do not wait for each other";
  EXPECT_TRUE(callback->levels.empty()) << "the notification has not returned";
  gate.Open();
  EXPECT_EQ(callback->levels.TakeMany(4), (std::vector<int>{1, 2, 3, 4}));
  EXPECT_EQ(counter.died, 1);
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
