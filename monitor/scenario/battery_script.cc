#include "tools/battery_life.h"

namespace norvik::qel::tool {

namespace {

using namespace std::chrono_literals;

// The battery ends where it began, but for a cycle more.
std::vector<Life::Step> Steps(BatteryDriver& phone) {
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
      {500ms, [&] { phone.SetLevel(50); }},  // nobody can hear it yet
      {500ms, [&] { phone.StartService(); }},
      {2000ms, [] {}},  // time for the library to link again
  };
}

}  // namespace

BatteryLife::BatteryLife(BatteryDriver& driver) : Life(Steps(driver)), driver_(driver) {}

BatteryLife::~BatteryLife() {
  driver_.StartService();
}

}  // namespace norvik::qel::tool
