// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/battery_script.h"

namespace norvik::qel::monitor {

namespace {

using namespace std::chrono_literals;

// The battery ends where it began, with one more cycle.
std::vector<DeviceScript::Step> Steps(BatteryDriver& phone) {
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

}  // namespace

BatteryScript::BatteryScript(BatteryDriver& driver)
    : DeviceScript(Steps(driver)), driver_(driver) {}

BatteryScript::~BatteryScript() {
  driver_.StartService();
}

}  // namespace norvik::qel::monitor
