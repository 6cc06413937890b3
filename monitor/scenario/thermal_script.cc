// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/thermal_script.h"

namespace norvik::qel::monitor {

namespace {

using namespace std::chrono_literals;

// A game heats the phone and strains its battery, and the thermal service crashes before all is
// cool again. A new one is there at once: the library looks for it for a moment only. The phone
// ends as it began.
std::vector<DeviceScript::Step> Steps(ThermalDriver& phone) {
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

}  // namespace

ThermalScript::ThermalScript(ThermalDriver& driver) : DeviceScript(Steps(driver)) {}

}  // namespace norvik::qel::monitor
