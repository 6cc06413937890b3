// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Tests SpeakerGuard on a simulated phone. The test's time limit catches a missing callback.
#include "speaker_guard.h"

#include <android/binder_process.h>
#include <errno.h>

#include <cstdio>
#include <cstdlib>

#include "quorvel/simulated/health.h"
#include "quorvel/simulated/thermal.h"

namespace {

using norvik::qel::fake::Outcome;
using norvik::qel::services::HealthOperation;
using norvik::qel::simulated::Health;
using norvik::qel::simulated::Thermal;
using norvik::qel::simulated::ThermalPath;

void Check(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "failed: %s\n", what);
  std::exit(EXIT_FAILURE);
}

struct Phone {
  Phone() {
    health.Start();
    thermal.Start(ThermalPath::kAidl);
  }
  Health health;
  Thermal thermal;
};

void VolumeFollowsTheBattery() {
  Phone phone;
  SpeakerGuard guard;
  Check(guard.volume_percent() == 100, "a normal battery means full volume");
  phone.health.SetLevel(15);
  guard.WaitForVolume(75);
  phone.health.SetLevel(16);
  guard.WaitForVolume(100);
}

void VolumeFollowsTheSkin() {
  Phone phone;
  SpeakerGuard guard;
  Check(guard.GuardSkin("skin"), "the phone has a skin temperature");
  Check(!guard.GuardSkin("fur"), "the phone has no such temperature");
  // Severities that arrive before a callback runs are not queued; see ThermalCallbackFunc in
  // quorvel.h. Wait for the one that follows the registration.
  guard.WaitUntilSkinIsKnown();
  phone.thermal.SetSeverity("skin", Thermal::ThrottlingSeverity::SEVERE);
  guard.WaitForVolume(50);
  phone.thermal.SetSeverity("skin", Thermal::ThrottlingSeverity::MODERATE);
  guard.WaitForVolume(100);
}

void VolumeFollowsARestartedHealthService() {
  Phone phone;
  SpeakerGuard guard;
  phone.health.Kill();
  phone.health.SetLevel(10);
  phone.health.Start();
  guard.WaitForVolume(75);  // the library has reconnected
}

void AFailedQueryIsReported() {
  Phone phone;
  SpeakerGuard guard;
  phone.health.on(HealthOperation::kGetHealthInfo)
      .Then(Outcome::Exception(EX_ILLEGAL_STATE, "not now"));
  Check(guard.FreshLevel() == -EAGAIN, "the scripted failure");
  Check(guard.FreshLevel() == 50, "the next query works");
}

}  // namespace

int main() {
  ABinderProcess_startThreadPool();
  VolumeFollowsTheBattery();
  VolumeFollowsTheSkin();
  VolumeFollowsARestartedHealthService();
  AFailedQueryIsReported();
  std::puts("passed");
}
