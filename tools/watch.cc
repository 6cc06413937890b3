#include <algorithm>

#include "tools/battery_client.h"
#include "tools/battery_life.h"
#include "tools/commands.h"
#include "tools/session.h"

namespace norvik::qel::tool {

namespace {

// Until somebody stops it or the time is over, if there is an end.
void Watch(Session& session, std::optional<std::chrono::milliseconds> duration) {
  using Clock = Session::Clock;
  const Clock::time_point end = duration ? Clock::now() + *duration : Clock::time_point::max();
  std::optional<BatteryLife> life;
  if (BatteryDriver* driver = session.device().battery_driver()) life.emplace(*driver);
  while (true) {
    const Clock::time_point step = life ? life->next_step() : Clock::time_point::max();
    const Session::Wake wake = session.WaitUntil(std::min(step, end));
    if (wake == Session::Wake::kStop) return;
    if (wake == Session::Wake::kEvent) continue;
    if (Clock::now() >= end) return;
    life->Step();  // without a life the end is all that can be due
  }
}

}  // namespace

int WatchBattery(const Options& options, Output& output) {
  output.Explain("Watching the battery of the device '" + std::string(options.device->name) +
                 (options.duration ? "'." : "'; Ctrl-C ends."));
  output.Explain("Lines with ** come from the device, all others through a client's callback.");
  Session session(options, output);
  BatteryClient client(session.events());
  if (!client.Register()) {
    Complain("the library refuses to register a callback");
    return EXIT_FAILURE;
  }
  Watch(session, options.duration);
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::tool
