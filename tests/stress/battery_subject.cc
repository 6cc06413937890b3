// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

#include "guard.h"
#include "quorvel.h"
#include "quorvel/simulated/health.h"
#include "stress_tests.h"
#include "subject.h"

namespace norvik::qel::stress {

namespace {

using services::HealthOperation;

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
constexpr int kCount = static_cast<int>(kProperties.size());

const Property& PropertyOf(int client) {
  return kProperties.at(static_cast<size_t>(client % kCount));
}

// Two clients of each property, which differ in their functions.
BatteryInfoCallback FunctionOf(int client) {
  return client < kCount ? Client::Hear : Client::HearToo;
}

class Battery : public Subject {
 public:
  ~Battery() override { close(nowhere_); }
  const char* name() const override { return "battery"; }

  void Init(void** handle) const override { InitBatteryInfo(handle); }
  void Deinit(void** handle) const override { DeinitBatteryInfo(handle); }
  int clients() const override { return 2 * kCount; }
  int Register(void* handle, int client, Client& cookie) const override {
    return PropertyOf(client).add(handle, FunctionOf(client), &cookie);
  }
  int Deregister(void* handle, int client) const override {
    return PropertyOf(client).remove(handle, FunctionOf(client));
  }
  void Ask(void* handle, int round) const override {
    const int value = PropertyOf(round).get(handle, /*use_cached=*/round % 3 == 0);
    if (value < -1 && value != -EAGAIN) Fail("a value that never was: " + std::to_string(value));
    DumpBatteryInfo(handle, nowhere_);
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
    return client % kCount < 2 ? value : (value + 1) % 2;
  }

  void Start() override { health_.Start(); }
  void Kill() override { health_.Kill(); }
  size_t held() const override { return health_.callback_count(); }
  size_t held_by_handle() const override { return 1; }
  fake::Script& enlist() override { return health_.on(HealthOperation::kRegisterCallback); }
  int pauses() const override { return 10; }

  // Values are passed on as reported, not checked.
  long Hostilities(int rounds) override {
    long done = 0;
    Start();
    Handle handle(*this);
    handle.RegisterAll();
    for (int round = 0; round < rounds; ++round) {
      UnderWay("hostile values");
      for (const int value : {INT_MIN + 1, -1, -EAGAIN, INT_MAX, 101, -EINVAL, 0}) {
        // One that differs, so that what follows is news.
        for (const int reported : {round % 100, value}) {
          health_.Change([=](auto& info) {
            info.batteryLevel = reported;
            info.batteryCycleCount = reported;
          });
          Deliver();
          ExpectEqual(GetBatteryLevel(handle.get(), true), reported, "a level");
          ExpectEqual(GetBatteryCycleCount(handle.get(), false), reported, "a cycle count");
          for (const int client : {0, 1, kCount, kCount + 1}) {
            // -1 stands for "not known"; it is a report like any other all the same.
            Await(
                "a hostile value", [&] { return handle.client(client).last.load(); }, reported);
          }
          ++done;
        }
      }
    }
    handle.Deinit();
    Settle();
    return done;
  }

 private:
  simulated::Health health_;
  const int nowhere_ = open("/dev/null", O_WRONLY | O_CLOEXEC);
};

}  // namespace

std::unique_ptr<Subject> MakeBattery() {
  return std::make_unique<Battery>();
}

}  // namespace norvik::qel::stress
