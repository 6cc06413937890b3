#include "tools/demo_story.h"

#include <stdlib.h>

#include <chrono>
#include <string>

#include "tools/battery_properties.h"
#include "tools/battery_story.h"
#include "tools/sensor_properties.h"
#include "tools/sensor_story.h"
#include "tools/teller.h"
#include "tools/thermal_properties.h"
#include "tools/thermal_story.h"

namespace norvik::qel::tool {

namespace {

std::string Counts(const Observed& observed) {
  using Kind = DeviceEvent::Kind;
  return Counted(CallbacksOf(kBatteryProperties, observed), "callback") + " for the battery, " +
         std::to_string(CallbacksOf(kSensorProperties, observed)) + " for the sensors and " +
         std::to_string(CallbacksOf(kThermalProperties, observed)) + " for the heat, " +
         Counted(observed.count(Kind::kServiceDied, kHealthService), "death") +
         " of the health service and " +
         std::to_string(observed.count(Kind::kServiceDied, kThermalService)) +
         " of the thermal service, " +
         Counted(observed.count(Kind::kCallRefused, kHealthService), "refusal") + " and " +
         Counted(observed.relinks(), "relink");
}

}  // namespace

int TellStory(Session& session, BatteryDriver& battery, SensorDriver& sensors,
              ThermalDriver& thermal) {
  const auto begin = Session::Clock::now();
  Teller teller(session);
  const bool success = TellOfTheBattery(teller, battery) && TellOfTheSensors(teller, sensors) &&
                       TellOfTheHeat(teller, thermal);
  const Observed& observed = session.observed();
  const auto seconds = std::chrono::round<std::chrono::seconds>(Session::Clock::now() - begin);
  const std::string counts =
      "observed " + Counts(observed) + " in " + std::to_string(seconds.count()) + " s.";
  Output& output = session.output();
  if (success) {
    output.Summary(true, "Demo OK: all went as told; " + counts, observed);
    return EXIT_SUCCESS;
  }
  if (teller.stopped()) {
    output.Summary(false, "Demo stopped before its end; " + counts, observed);
    return EXIT_SUCCESS;
  }
  output.Summary(false, "Demo FAILED: " + teller.failure() + "; " + counts, observed);
  return EXIT_FAILURE;
}

}  // namespace norvik::qel::tool
