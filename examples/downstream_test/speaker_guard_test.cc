// The guard on a simulated phone. What does not come is caught by the test's time limit.
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
  std::fprintf(stderr, "not so: %s\n", what);
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
  Check(guard.volume_percent() == 100, "a battery in order means full volume");
  phone.health.SetLevel(15);
  guard.WaitForVolume(75);
  phone.health.SetLevel(16);
  guard.WaitForVolume(100);
}

void VolumeFollowsTheSkin() {
  Phone phone;
  SpeakerGuard guard;
  Check(guard.GuardSkin("skin"), "the phone has a skin temperature");
  Check(!guard.GuardSkin("fur"), "it has no fur");
  // A thermal client receives only the oldest change: wait for the one of the registration.
  guard.WaitUntilSkinIsKnown();
  phone.thermal.SetSeverity("skin", Thermal::ThrottlingSeverity::SEVERE);
  guard.WaitForVolume(50);
  phone.thermal.SetSeverity("skin", Thermal::ThrottlingSeverity::MODERATE);
  guard.WaitForVolume(100);
}

void TheGuardOutlivesTheHealthService() {
  Phone phone;
  SpeakerGuard guard;
  phone.health.Kill();
  phone.health.SetLevel(10);
  phone.health.Start();
  guard.WaitForVolume(75);  // the library has linked again
}

void AFailedQuestionIsTold() {
  Phone phone;
  SpeakerGuard guard;
  phone.health.on(HealthOperation::kGetHealthInfo)
      .Then(Outcome::Exception(EX_ILLEGAL_STATE, "not now"));
  Check(guard.FreshLevel() == -EAGAIN, "the scripted failure");
  Check(guard.FreshLevel() == 50, "then the service works");
}

}  // namespace

int main() {
  ABinderProcess_startThreadPool();
  VolumeFollowsTheBattery();
  VolumeFollowsTheSkin();
  TheGuardOutlivesTheHealthService();
  AFailedQuestionIsTold();
  std::puts("the speaker is guarded");
}
