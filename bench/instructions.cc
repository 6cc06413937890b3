// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Does the library's frequent work a given number of times, one at a time: a report to a client of
// each family, and a cached getter. library_figures.py counts the instructions of the library's
// functions in it, which needs no particular processor.
#include <android/binder_process.h>
#include <android/log.h>
#include <android/sensor.h>
#include <stdio.h>
#include <stdlib.h>

#include <chrono>
#include <semaphore>

#include "benchmarks.h"
#include "quorvel.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"

namespace norvik::qel::bench {

namespace {

std::counting_semaphore<> called(0);

void Client(int /*value*/, void* /*cookie*/) {
  called.release();
}

void WaitForClient() {
  Must(called.try_acquire_for(std::chrono::seconds(60)));
}

void Run(int rounds) {
  simulated::Health health;
  simulated::SensorHub hub;
  simulated::Thermal thermal;
  hub.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
  health.SetLevel(50);
  health.Start();
  hub.Start();
  thermal.Start(simulated::ThermalPath::kAidl);
  void* handles[3] = {};
  InitBatteryInfo(&handles[0]);
  InitSensorInfo(&handles[1]);
  InitThermalInfo(&handles[2]);
  Must(RegisterBatteryLevelCallback(handles[0], Client, nullptr) == 0);
  WaitForClient();
  Must(RegisterProximitySensorCallback(handles[1], /*id=*/1, Client, &called) == 0);
  WaitForClient();
  const ThermalCallbackParam skin = {
      .id = 1, .type_name = "SKIN", .temperature_name = "skin", .callback = Client};
  Must(RegisterThermalCallback(handles[2], &skin, &called) == 0);
  WaitForClient();
  for (int i = 0; i < rounds; ++i) {
    health.SetLevel(i % 2 == 0 ? 40 : 41);
    WaitForClient();
    hub.Report(ASENSOR_TYPE_PROXIMITY, i % 2 == 0 ? 5 : 1);
    WaitForClient();
    thermal.SetSeverity("skin", static_cast<simulated::Thermal::ThrottlingSeverity>(1 - i % 2));
    WaitForClient();
    Must(GetBatteryLevel(handles[0], /*use_cached=*/true) == (i % 2 == 0 ? 40 : 41));
  }
  DeinitThermalInfo(&handles[2]);
  DeinitSensorInfo(&handles[1]);
  DeinitBatteryInfo(&handles[0]);
}

}  // namespace

}  // namespace norvik::qel::bench

// NOLINTNEXTLINE(bugprone-exception-escape): a failure ends the program with its message
int main(int argc, char** argv) {
  const int rounds = argc == 2 ? atoi(argv[1]) : 0;
  if (rounds <= 0) {
    fprintf(stderr, "usage: %s ROUNDS\n", argv[0]);
    return EXIT_FAILURE;
  }
  ABinderProcess_startThreadPool();
  __android_log_set_minimum_priority(ANDROID_LOG_WARN);
  norvik::qel::bench::Run(rounds);
  return EXIT_SUCCESS;
}
