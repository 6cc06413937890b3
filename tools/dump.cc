#include <optional>
#include <string>
#include <vector>

#include "tools/battery_client.h"
#include "tools/commands.h"
#include "tools/sensor_readings.h"
#include "tools/session.h"

namespace norvik::qel::tool {

int Dump(const Options& options, Output& output) {
  Session session(options, output, {.show_events = false});
  BatteryClient battery(session.events());
  std::optional<SensorClient> sensors;
  if (options.device->has_sensor_service) sensors.emplace(session.events());
  // What is wrong keeps nobody from seeing the dumps: they may tell why.
  std::vector<std::string> wrong;
  if (!battery.Register()) wrong.push_back(kRefusal);
  if (sensors && !sensors->Register()) wrong.push_back(kRefusal);

  // Both families have the same time.
  const auto until = Session::Clock::now() + kReportLimit;
  if (wrong.empty()) {
    const auto heard = [&] { return CallbacksOf(kBatteryProperties, session.observed()) > 0; };
    const auto wake = session.WaitFor(heard, until - Session::Clock::now());
    if (wake == Session::Wake::kStop) return EXIT_SUCCESS;
    if (wake == Session::Wake::kTime) wrong.push_back(SilenceOf(kHealthService));
    if (sensors) {
      const auto sensor_wake = WaitForReadings(session, *sensors, until);
      if (sensor_wake == Session::Wake::kStop) return EXIT_SUCCESS;
      if (sensor_wake == Session::Wake::kTime) wrong.push_back(SilenceOf(kSensorService));
    }
  }

  output.ShowDump("battery", battery.Dump());
  if (sensors) {
    output.ShowDump("sensors", sensors->Dump());
  } else {
    output.Say("This device has no sensors.");
  }
  for (const std::string& text : wrong) Complain(text);
  return wrong.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace norvik::qel::tool
