// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/device_steps.h"

namespace norvik::qel::monitor {

using namespace std::chrono_literals;

// With one more cycle at the end.
DeviceSteps StepsOf(BatteryDriver& phone) {
  return {
      {700ms, [&] { phone.SetLevel(49); }},
      {1000ms, [&] { phone.SetLevel(48); }},
      {1000ms, [&] { phone.SetWirelessOnline(true); }},
      {1000ms, [&] { phone.SetLevel(49); }},
      {1000ms, [&] { phone.SetLevel(50); }},
      {1000ms, [&] { phone.SetWirelessOnline(false); }},
      {1000ms, [&] { phone.SetDockOnline(true); }},
      {1000ms, [&, cycles = 10]() mutable { phone.SetCycleCount(++cycles); }},
      {1000ms, [&] { phone.SetLevel(51); }},
      {1000ms, [&] { phone.SetDockOnline(false); }},
      {1000ms, [&] { phone.KillService(); }},
      {500ms, [&] { phone.SetLevel(50); }},  // not reported yet
      {500ms, [&] { phone.StartService(); }},
      {2000ms, [] {}},  // time for the library to link again
  };
}

// A user opens the phone, takes a call and closes it. The service never dies: the library does not
// survive that.
DeviceSteps StepsOf(SensorDriver& phone) {
  return {
      {700ms, [&] { phone.SetHingeAngle(30); }},  {300ms, [&] { phone.SetHingeAngle(60.5F); }},
      {300ms, [&] { phone.SetHingeAngle(90); }},  {300ms, [&] { phone.SetHingeAngle(134.9F); }},
      {300ms, [&] { phone.SetHingeAngle(180); }}, {1000ms, [&] { phone.SetProximity(0); }},
      {1500ms, [&] { phone.SetProximity(5); }},   {1000ms, [&] { phone.SetHingeAngle(90); }},
      {300ms, [&] { phone.SetHingeAngle(0); }},   {1000ms, [] {}},
  };
}

// A game heats the phone and strains its battery, and the thermal service crashes before all is
// cool again. A new one is there at once: the library looks for it for a moment only.
DeviceSteps StepsOf(ThermalDriver& phone) {
  return {
      {700ms, [&] { phone.SetTemperature("cpu", 86, Severity::kLight); }},
      {500ms, [&] { phone.SetTemperature("skin", 36.5F, Severity::kLight); }},
      {500ms, [&] { phone.SetTemperature("cpu", 91.5F, Severity::kModerate); }},
      {500ms, [&] { phone.SetTemperature("skin", 41.2F, Severity::kModerate); }},
      {500ms, [&] { phone.SetSeverity("AUDIO_current", Severity::kLight); }},
      {500ms, [&] { phone.SetTemperature("skin", 45.8F, Severity::kSevere); }},
      {1000ms,
       [&] {
         phone.KillThermalService();
         phone.StartThermalService();
       }},
      {1000ms, [&] { phone.SetTemperature("cpu", 60, Severity::kNone); }},
      {500ms, [&] { phone.SetSeverity("AUDIO_current", Severity::kNone); }},
      {500ms, [&] { phone.SetTemperature("skin", 40.1F, Severity::kModerate); }},
      {500ms, [&] { phone.SetTemperature("skin", 35.3F, Severity::kLight); }},
      {500ms,
       [&] {
         phone.SetTemperature("skin", 30, Severity::kNone);
         phone.SetTemperature("cpu", 40, Severity::kNone);
       }},
      {1000ms, [] {}},
  };
}

}  // namespace norvik::qel::monitor
