#include "tools/sensor_life.h"

namespace norvik::qel::tool {

namespace {

using namespace std::chrono_literals;

// Somebody opens the phone, takes a call and closes it. It ends where it began. The service never
// dies: the library does not survive that.
std::vector<Life::Step> Steps(SensorDriver& phone) {
  return {
      {700ms, [&] { phone.SetHingeAngles({30}); }},
      {300ms, [&] { phone.SetHingeAngles({60.5F}); }},
      {300ms, [&] { phone.SetHingeAngles({90}); }},
      {300ms, [&] { phone.SetHingeAngles({134.9F}); }},
      {300ms, [&] { phone.SetHingeAngles({180}); }},
      {1000ms, [&] { phone.SetProximity(0); }},
      {1500ms, [&] { phone.SetProximity(5); }},
      {1000ms, [&] { phone.SetHingeAngles({90}); }},
      {300ms, [&] { phone.SetHingeAngles({0}); }},
      {1000ms, [] {}},
  };
}

}  // namespace

SensorLife::SensorLife(SensorDriver& driver) : Life(Steps(driver)) {}

}  // namespace norvik::qel::tool
