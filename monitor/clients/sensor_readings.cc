// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/sensor_readings.h"

#include <algorithm>

namespace norvik::qel::monitor {

namespace {

constexpr std::chrono::seconds kGrace(1);

}  // namespace

Session::Wake WaitForReadings(Session& session, const SensorClient& client,
                              Session::Clock::time_point until) {
  const std::vector<const SensorProperty*> sensors = client.sensors();
  const Observed& observed = session.observed();
  const auto all_heard = [&] {
    return std::all_of(sensors.begin(), sensors.end(), [&](const SensorProperty* sensor) {
      return observed.callbacks(*sensor) > 0;
    });
  };
  const auto all_reported = [&] {
    return std::all_of(sensors.begin(), sensors.end(), [&](const SensorProperty* sensor) {
      return observed.callbacks(*sensor) > 1 || observed.value(*sensor) != Value(0);
    });
  };
  const Session::Wake wake = session.WaitFor(all_heard, until - Session::Clock::now());
  if (wake != Session::Wake::kEvent) return wake;
  // A sensor that has nothing to say is no reason to fail.
  const bool stopped = session.WaitFor(all_reported, kGrace) == Session::Wake::kStop;
  return stopped ? Session::Wake::kStop : Session::Wake::kEvent;
}

}  // namespace norvik::qel::monitor
