#include "tools/demo_story.h"

#include <stdlib.h>

#include <chrono>
#include <string>

#include "tools/battery_properties.h"
#include "tools/battery_story.h"
#include "tools/sensor_properties.h"
#include "tools/sensor_story.h"
#include "tools/teller.h"

namespace norvik::qel::tool {

namespace {

std::string Counts(const Observed& observed) {
  using Kind = DeviceEvent::Kind;
  return Counted(CallbacksOf(kBatteryProperties, observed), "callback") + " for the battery and " +
         std::to_string(CallbacksOf(kSensorProperties, observed)) + " for the sensors, " +
         Counted(observed.count(Kind::kServiceDied, kHealthService), "death") +
         " of the health service, " +
         Counted(observed.count(Kind::kCallRefused, kHealthService), "refusal") + " and " +
         Counted(observed.relinks(), "relink");
}

}  // namespace

int TellStory(Session& session, BatteryDriver& battery, SensorDriver& sensors) {
  const auto begin = Session::Clock::now();
  Teller teller(session);
  const bool success = TellOfTheBattery(teller, battery) && TellOfTheSensors(teller, sensors);
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
