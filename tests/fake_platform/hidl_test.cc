// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The rules of HIDL in the fake platform: look-ups, proxies, threads, deaths.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/fake/service_process.h"
#include "quorvel/simulated/thermal.h"
#include "thermal_doubles.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

namespace V1_0 = android::hardware::thermal::V1_0;
namespace V2_0 = android::hardware::thermal::V2_0;
using android::sp;
using android::wp;
using android::hardware::interfacesEqual;
using android::hardware::Return;
using android::hidl::base::V1_0::IBase;
using services::HidlThermalOperation;
using services::HidlThermalService;
using simulated::ThermalPath;
using testing::SizeIs;

constexpr V2_0::TemperatureType kAnyType = V2_0::TemperatureType::UNKNOWN;

class HidlTest : public testing::Test {
 protected:
  HidlTest() {
    thermal_.Declare(ThermalPath::kHidl);
    thermal_.Start(ThermalPath::kHidl);
  }
  ~HidlTest() override { EXPECT_TRUE(fake::WaitUntilDelivered()); }

  static sp<V2_0::IThermal> LookUp() { return V2_0::IThermal::tryGetService("default", false); }
  void Kill() { thermal_.Kill(ThermalPath::kHidl); }
  fake::Script& on(HidlThermalOperation operation) { return thermal_.on(operation); }

  simulated::Thermal thermal_;
};

TEST_F(HidlTest, ALookUpGivesANewProxyEachTime) {
  const sp<V2_0::IThermal> service = LookUp();
  ASSERT_NE(service, nullptr);
  EXPECT_TRUE(service->isRemote());
  const sp<V2_0::IThermal> again = V2_0::IThermal::getService();
  EXPECT_NE(again, service);
  EXPECT_TRUE(interfacesEqual(again, service));
  const sp<V2_0::IThermalChangedCallback> other =
      V2_0::IThermalChangedCallback::castFrom(sp<IBase>(service));
  EXPECT_EQ(other, nullptr) << "another interface";
  const sp<V2_0::IThermal> back = V2_0::IThermal::castFrom(sp<V1_0::IThermal>(service));
  EXPECT_TRUE(interfacesEqual(back, service));

  // The service is found under its base interface only if that is declared.
  EXPECT_EQ(V1_0::IThermal::tryGetService(), nullptr);
  fake::DeclareHidl("android.hardware.thermal@1.0::IThermal/default");
  EXPECT_TRUE(interfacesEqual(V1_0::IThermal::tryGetService(), service));
  fake::UndeclareHidl("android.hardware.thermal@1.0::IThermal/default");
}

TEST_F(HidlTest, ALookUpWithoutAServiceReturnsNull) {
  EXPECT_EQ(V2_0::IThermal::tryGetService("other"), nullptr);
  EXPECT_EQ(V2_0::IThermal::tryGetService(/*getStub=*/true), nullptr);
  thermal_.on(fake::BinderFunction::kTryGetHidlService).Then({.status = STATUS_PERMISSION_DENIED});
  EXPECT_EQ(LookUp(), nullptr);
  {
    const fake::NoHidlServiceManager absent;
    EXPECT_EQ(LookUp(), nullptr);
    EXPECT_EQ(V2_0::IThermal::getService(), nullptr);
    EXPECT_NE(sp<HidlThermalService>::make(services::ThermalData{})->registerAsService("own"),
              android::OK);
  }
  EXPECT_NE(LookUp(), nullptr);
  thermal_.Undeclare(ThermalPath::kHidl);
  EXPECT_EQ(LookUp(), nullptr) << "running, but not declared";
  EXPECT_EQ(V2_0::IThermal::getService(), nullptr);
  thermal_.Declare(ThermalPath::kHidl);
  Kill();
  EXPECT_EQ(LookUp(), nullptr) << "declared, but not running";
  auto waiting = std::async(std::launch::async, [] { return V2_0::IThermal::getService(); });
  EXPECT_TRUE(thermal_.on(fake::BinderFunction::kGetHidlService).WaitForCalls(3));
  thermal_.Start(ThermalPath::kHidl);
  EXPECT_NE(waiting.get(), nullptr) << "waited for";
}

struct Recipient : android::hardware::hidl_death_recipient {
  void serviceDied(uint64_t cookie, const wp<IBase>& who) override {
    if (gate != nullptr) gate->Pass();
    thread = ThreadName();
    last_who = who;
    if (also != nullptr) also(who.promote());
    told.Put(cookie);
  }
  std::shared_ptr<fake::Gate> gate;
  std::function<void(sp<IBase>)> also;
  Seen<uint64_t> told;
  std::string thread;
  wp<IBase> last_who;
};

TEST_F(HidlTest, AServiceOfTheSameProcessIsTheObjectItself) {
  const auto service = sp<HidlThermalService>::make(services::ThermalData{});
  ASSERT_EQ(service->registerAsService("own"), android::OK);
  fake::DeclareHidl("android.hardware.thermal@2.0::IThermal/own");
  const sp<V2_0::IThermal> found = V2_0::IThermal::tryGetService("own");
  fake::UndeclareHidl("android.hardware.thermal@2.0::IThermal/own");
  EXPECT_EQ(found, sp<V2_0::IThermal>(service));
  EXPECT_FALSE(found->isRemote());
  EXPECT_FALSE(interfacesEqual(found, LookUp()));
  // Links to a local object succeed and have no effect.
  const auto recipient = sp<Recipient>::make();
  EXPECT_TRUE(found->linkToDeath(recipient, 1));
  EXPECT_TRUE(found->unlinkToDeath(recipient));
  EXPECT_FALSE(found->linkToDeath(nullptr, 1));
  EXPECT_FALSE(found->unlinkToDeath(nullptr));
  // A call to a local object, and its notifications, run on the caller's thread.
  const auto callback = sp<HidlThermalCallback>::make();
  HidlAnswer answer;
  EXPECT_TRUE(
      found->registerThermalChangedCallback(callback, false, kAnyType, answer.Take()).isOk());
  service->Notify({.name = "skin"});
  EXPECT_FALSE(callback->heard.empty());
}

TEST_F(HidlTest, ACallRunsInTheServiceAndItsResultCallbackInTheCaller) {
  constexpr auto kOperation = HidlThermalOperation::kGetCurrentTemperatures;
  const sp<V2_0::IThermal> service = LookUp();
  std::vector<V2_0::Temperature> temperatures;
  HidlAnswer answer;
  const auto call = [&] {
    return service->getCurrentTemperatures(false, kAnyType, answer.Take(temperatures));
  };
  ASSERT_TRUE(call().isOk());
  EXPECT_EQ(answer.calls, 1);
  EXPECT_EQ(answer.thread, std::this_thread::get_id());
  EXPECT_FALSE(answer.failed());
  EXPECT_THAT(temperatures, SizeIs(thermal_.data().temperatures.size()));

  on(kOperation).Then(fake::Outcome::Exception(EX_ILLEGAL_STATE, "not now"));
  ASSERT_TRUE(call().isOk());
  EXPECT_TRUE(answer.failed());
  EXPECT_EQ(answer.status.debugMessage, "not now");
  EXPECT_THAT(temperatures, SizeIs(0));

  on(kOperation).Then({.status = STATUS_FAILED_TRANSACTION});
  const Return<void> lost = call();
  EXPECT_FALSE(lost.isOk());
  EXPECT_FALSE(lost.isDeadObject());
  EXPECT_FALSE(service->getCurrentTemperatures(false, kAnyType, nullptr).isOk());
  EXPECT_EQ(on(kOperation).calls(), 3) << "without a result callback nothing is sent";

  Kill();
  thermal_.Start(ThermalPath::kHidl);
  EXPECT_TRUE(call().isDeadObject()) << "a restarted service is another object";
  EXPECT_FALSE(interfacesEqual(service, LookUp()));
  EXPECT_EQ(answer.calls, 2) << "no answer when the transport fails";
}

TEST_F(HidlTest, AServiceMustCallItsResultCallbackOnce) {
  struct RudeService : HidlThermalService {
    explicit RudeService(int count) : HidlThermalService({}), answers(count) {}
    Return<void> getCpuUsages(getCpuUsages_cb _hidl_cb) override {
      for (int i = 0; i < answers; ++i) _hidl_cb({}, {});
      return android::hardware::Void();
    }
    const int answers;
  };
  const auto call = [](int answers) {
    fake::ServiceProcess process("rude");
    ASSERT_TRUE(process.AddHidlService(sp<RudeService>::make(answers)));
    EXPECT_TRUE(LookUp()->getCpuUsages([](const auto&, const auto&) {}).isOk());
  };
  call(1);
  EXPECT_DEATH(call(0), "not called");
  EXPECT_DEATH(call(2), "called twice");
}

TEST_F(HidlTest, ALinkBelongsToItsProxyAndHoldsItsRecipientWeakly) {
  const auto recipient = sp<Recipient>::make();
  const sp<V2_0::IThermal> service = LookUp();
  sp<V2_0::IThermal> dropped = LookUp();
  const sp<V2_0::IThermal> another = LookUp();
  auto held_weakly = sp<Recipient>::make();
  const wp<Recipient> weak = held_weakly;
  ASSERT_TRUE(service->linkToDeath(recipient, 1));
  ASSERT_TRUE(service->linkToDeath(recipient, 2));
  EXPECT_FALSE(another->unlinkToDeath(recipient)) << "not linked here";
  EXPECT_TRUE(service->unlinkToDeath(recipient)) << "the newest";
  ASSERT_TRUE(dropped->linkToDeath(recipient, 3));
  dropped.clear();
  ASSERT_TRUE(another->linkToDeath(held_weakly, 4));
  held_weakly.clear();
  EXPECT_EQ(weak.promote(), nullptr);
  thermal_.on(fake::BinderFunction::kHidlLinkToDeath).Then({.status = STATUS_UNKNOWN_ERROR});
  const Return<bool> refused = another->linkToDeath(recipient, 5);
  EXPECT_TRUE(refused.isOk()) << "no failure of the transport";
  EXPECT_FALSE(refused);
  EXPECT_TRUE(another->linkToDeath(nullptr, 6));
  EXPECT_FALSE(another->unlinkToDeath(nullptr));
  Kill();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(recipient->told.Take(), 1u);
  EXPECT_EQ(recipient->thread, "hwbinder:host");
  EXPECT_EQ(recipient->last_who.promote(), sp<IBase>(service));

  EXPECT_FALSE(service->unlinkToDeath(recipient)) << "gone with its notification";
  const Return<bool> late = service->linkToDeath(recipient, 7);
  EXPECT_TRUE(late.isOk());
  EXPECT_FALSE(late) << "known to be dead";
}

TEST_F(HidlTest, ALinkToADeadServiceIsNotifiedAndUnlinkingDoesNotWaitForThat) {
  const auto recipient = sp<Recipient>::make();
  sp<V2_0::IThermal> service = LookUp();
  recipient->gate = std::make_shared<fake::Gate>();
  recipient->also = [&](const sp<IBase>& proxy) {
    EXPECT_FALSE(proxy->linkToDeath(recipient, 2)) << "known to be dead";
    service.clear();
  };
  Kill();
  EXPECT_TRUE(service->linkToDeath(recipient, 1));
  ASSERT_TRUE(recipient->gate->WaitForArrivals());
  EXPECT_FALSE(service->unlinkToDeath(recipient)) << "too late";
  recipient->gate->Open();
  EXPECT_EQ(recipient->told.Take(), 1u);
  EXPECT_EQ(service, nullptr) << "a notification may drop the proxy";
}

}  // namespace
}  // namespace norvik::qel
