#include "tools/battery_life.h"

#include <array>

namespace norvik::qel::tool {

namespace {

using namespace std::chrono_literals;

struct Step {
  std::chrono::milliseconds pause_before;
  void (*act)(BatteryDriver& driver, int& cycles);
};

// The battery ends where it began, but for a cycle more.
constexpr std::array kSteps = {
    Step{700ms, [](BatteryDriver& phone, int&) { phone.SetLevel(49); }},
    Step{1000ms, [](BatteryDriver& phone, int&) { phone.SetLevel(48); }},
    Step{1000ms, [](BatteryDriver& phone, int&) { phone.SetWirelessOnline(true); }},
    Step{1000ms, [](BatteryDriver& phone, int&) { phone.SetLevel(49); }},
    Step{1000ms, [](BatteryDriver& phone, int&) { phone.SetLevel(50); }},
    Step{1000ms, [](BatteryDriver& phone, int&) { phone.SetWirelessOnline(false); }},
    Step{1000ms, [](BatteryDriver& phone, int&) { phone.SetDockOnline(true); }},
    Step{1000ms, [](BatteryDriver& phone, int& cycles) { phone.SetCycleCount(++cycles); }},
    Step{1000ms, [](BatteryDriver& phone, int&) { phone.SetLevel(51); }},
    Step{1000ms, [](BatteryDriver& phone, int&) { phone.SetDockOnline(false); }},
    Step{1000ms, [](BatteryDriver& phone, int&) { phone.KillService(); }},
    Step{500ms, [](BatteryDriver& phone, int&) { phone.SetLevel(50); }},  // nobody can hear it yet
    Step{500ms, [](BatteryDriver& phone, int&) { phone.StartService(); }},
    Step{2000ms, [](BatteryDriver&, int&) {}},  // time for the library to link again
};

}  // namespace

BatteryLife::BatteryLife(BatteryDriver& driver)
    : driver_(driver), next_step_(Clock::now() + kSteps[0].pause_before) {}

BatteryLife::~BatteryLife() {
  driver_.StartService();
}

void BatteryLife::Step() {
  kSteps[step_].act(driver_, cycles_);
  step_ = (step_ + 1) % kSteps.size();
  next_step_ = Clock::now() + kSteps[step_].pause_before;
}

}  // namespace norvik::qel::tool
