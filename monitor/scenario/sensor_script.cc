#include "tools/sensor_life.h"

namespace norvik::qel::tool {

namespace {

using namespace std::chrono_literals;

// Somebody opens the phone, takes a call and closes it. It ends where it began. The service never
// dies: the library does not survive that.
std::vector<Life::Step> Steps(SensorDriver& phone) {
  return {
      {700ms, [&] { phone.SetHingeAngle(30); }},  {300ms, [&] { phone.SetHingeAngle(60.5F); }},
      {300ms, [&] { phone.SetHingeAngle(90); }},  {300ms, [&] { phone.SetHingeAngle(134.9F); }},
      {300ms, [&] { phone.SetHingeAngle(180); }}, {1000ms, [&] { phone.SetProximity(0); }},
      {1500ms, [&] { phone.SetProximity(5); }},   {1000ms, [&] { phone.SetHingeAngle(90); }},
      {300ms, [&] { phone.SetHingeAngle(0); }},   {1000ms, [] {}},
  };
}

}  // namespace

SensorLife::SensorLife(SensorDriver& driver) : Life(Steps(driver)) {}

}  // namespace norvik::qel::tool
