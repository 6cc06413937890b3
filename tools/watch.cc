#include <algorithm>

#include "tools/battery_client.h"
#include "tools/battery_life.h"
#include "tools/commands.h"
#include "tools/sensor_client.h"
#include "tools/sensor_life.h"
#include "tools/session.h"

namespace norvik::qel::tool {

namespace {

void Announce(const Options& options, Output& output) {
  output.Explain("Watching the " + std::string(options.family->name) + " of the device '" +
                 std::string(options.device->name) + (options.duration ? "'." : "'; Ctrl-C ends."));
  output.Explain("Lines with ** come from the device, all others through a client's callback.");
}

// Until somebody stops it or the time is over, if there is an end.
void Watch(Session& session, Life* life, std::optional<std::chrono::milliseconds> duration) {
  using Clock = Session::Clock;
  const Clock::time_point end = duration ? Clock::now() + *duration : Clock::time_point::max();
  while (true) {
    const Clock::time_point step = life != nullptr ? life->next_step() : Clock::time_point::max();
    const Session::Wake wake = session.WaitUntil(std::min(step, end));
    if (wake == Session::Wake::kStop) return;
    if (wake == Session::Wake::kEvent) continue;
    if (Clock::now() >= end) return;
    life->TakeStep();  // without a life the end is all that can be due
  }
}

int RefusedToRegister() {
  Complain(kRefusal);
  return EXIT_FAILURE;
}

}  // namespace

int WatchBattery(const Options& options, Output& output) {
  Announce(options, output);
  Session session(options, output, {});
  BatteryClient client(session.events());
  if (!client.Register()) return RefusedToRegister();
  std::optional<BatteryLife> life;
  if (BatteryDriver* driver = session.device().battery_driver()) life.emplace(*driver);
  Watch(session, life ? &*life : nullptr, options.duration);
  return EXIT_SUCCESS;
}

int WatchSensors(const Options& options, Output& output) {
  Announce(options, output);
  Session session(options, output, {});
  SensorClient client(session.events());
  if (!client.Register()) return RefusedToRegister();
  for (const SensorProperty* sensor : client.absent_sensors()) {
    output.ShowReading(*sensor, Absent());
  }
  std::optional<SensorLife> life;
  if (SensorDriver* driver = session.device().sensor_driver()) life.emplace(*driver);
  Watch(session, life ? &*life : nullptr, options.duration);
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::tool
