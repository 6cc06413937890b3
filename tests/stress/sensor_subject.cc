// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <android/sensor.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <limits>
#include <optional>

#include "guard.h"
#include "quorvel.h"
#include "quorvel/simulated/sensor_hub.h"
#include "stress_tests.h"
#include "subject.h"

namespace norvik::qel::stress {

namespace {

constexpr int kProximity = ASENSOR_TYPE_PROXIMITY;
constexpr int kHinge = ASENSOR_TYPE_HINGE_ANGLE;

bool IsProximity(int client) {
  return client % 2 == 0;
}

// The library does not survive its service's death, and the hub's service starts once. So each
// start that follows a Kill() is of a new hub, whose predecessor nobody uses any more.
class Sensors : public Subject {
 public:
  Sensors() { Kill(); }
  ~Sensors() override { close(nowhere_); }
  const char* name() const override { return "sensor"; }

  void Init(void** handle) const override { InitSensorInfo(handle); }
  void Deinit(void** handle) const override { DeinitSensorInfo(handle); }
  int clients() const override { return 4; }
  int Register(void* handle, int client, Client& cookie) const override {
    const auto add =
        IsProximity(client) ? RegisterProximitySensorCallback : RegisterHingeAngleSensorCallback;
    return add(handle, client, Client::Hear, &cookie);
  }
  int Deregister(void* handle, int client) const override {
    const auto remove = IsProximity(client) ? DeregisterProximitySensorCallback
                                            : DeregisterHingeAngleSensorCallback;
    return remove(handle, client);
  }
  void Ask(void* handle, int /*round*/) const override { DumpSensorInfo(handle, nowhere_); }

  void Report(int value) override {
    const auto reading = static_cast<float>(value);
    hub_->Report({{.type = kProximity, .value = reading}, {.type = kHinge, .value = reading}});
  }
  int Heard(int /*client*/, int value) const override { return value; }

  void Start() override { hub_->Start(); }
  void Kill() override {
    hub_.reset();
    hub_.emplace();
    hub_->Add(kProximity, "proximity", 20'000);
    hub_->Add(kHinge, "hinge angle");
  }
  size_t held() const override {
    return static_cast<size_t>(hub_->listeners(kProximity)) +
           static_cast<size_t>(hub_->listeners(kHinge));
  }
  size_t held_by_handle() const override { return 2; }
  fake::Script& enlist() override { return hub_->on(fake::SensorFunction::kRegisterSensor); }
  int pauses() const override { return 0; }

  // What no int can hold becomes the nearest int, what is no number 0; unknown sensors go nowhere.
  long Hostilities(int rounds) override {
    using Limits = std::numeric_limits<float>;
    struct Reading {
      float value;
      int heard;
    };
    constexpr std::array kReadings = {Reading{Limits::quiet_NaN(), 0},
                                      Reading{Limits::infinity(), INT_MAX},
                                      Reading{-Limits::infinity(), INT_MIN},
                                      Reading{Limits::max(), INT_MAX},
                                      Reading{Limits::lowest(), INT_MIN},
                                      Reading{Limits::denorm_min(), 0},
                                      Reading{-0.5F, 0},
                                      Reading{4.9F, 4},
                                      Reading{2147483648.F, INT_MAX},
                                      Reading{-2147483648.F, INT_MIN}};
    Start();
    Handle handle(*this);
    handle.RegisterAll();
    long done = 0;
    for (int round = 0; round < rounds; ++round) {
      UnderWay("hostile values");
      for (const Reading& reading : kReadings) {
        Settle();
        const long before = handle.client(0).calls;
        ASensorEvent unknown = {};
        unknown.type = round % 2 == 0 ? INT_MAX : -1;
        unknown.data[0] = 77;
        hub_->SendUnasked({unknown, unknown});
        Settle();
        ExpectEqual(handle.client(0).calls, before, "calls for what a client does not listen to");
        hub_->Report(kProximity, reading.value);
        Await(
            "a call", [&] { return handle.client(0).calls.load(); }, before + 1);
        ExpectEqual(handle.client(0).last, reading.heard, "a hostile reading");
        done += 3;
      }
      // The same id twice.
      ExpectEqual(handle.Register(0), -EINVAL, "a registration of an id that is taken");
    }
    handle.Deinit();
    Settle();
    return done;
  }

 private:
  std::optional<simulated::SensorHub> hub_;
  const int nowhere_ = open("/dev/null", O_WRONLY | O_CLOEXEC);
};

}  // namespace

std::unique_ptr<Subject> MakeSensors() {
  return std::make_unique<Sensors>();
}

}  // namespace norvik::qel::stress
