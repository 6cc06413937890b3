// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/sensor_script.h"

namespace norvik::qel::monitor {

namespace {

using namespace std::chrono_literals;

// A user opens the phone, takes a call and closes it. It ends where it began. The service never
// dies: the library does not survive that.
std::vector<DeviceScript::Step> Steps(SensorDriver& phone) {
  return {
      {700ms, [&] { phone.SetHingeAngle(30); }},  {300ms, [&] { phone.SetHingeAngle(60.5F); }},
      {300ms, [&] { phone.SetHingeAngle(90); }},  {300ms, [&] { phone.SetHingeAngle(134.9F); }},
      {300ms, [&] { phone.SetHingeAngle(180); }}, {1000ms, [&] { phone.SetProximity(0); }},
      {1500ms, [&] { phone.SetProximity(5); }},   {1000ms, [&] { phone.SetHingeAngle(90); }},
      {300ms, [&] { phone.SetHingeAngle(0); }},   {1000ms, [] {}},
  };
}

}  // namespace

SensorScript::SensorScript(SensorDriver& driver) : DeviceScript(Steps(driver)) {}

}  // namespace norvik::qel::monitor
