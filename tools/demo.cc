#include "tools/battery_client.h"
#include "tools/commands.h"
#include "tools/demo_story.h"
#include "tools/session.h"

namespace norvik::qel::tool {

namespace {

// What the callbacks have told.
std::string Findings(const Observed& observed) {
  std::string text;
  for (const BatteryProperty* property : kBatteryProperties) {
    if (!text.empty()) text += ", ";
    text += std::string(property->name) + " " + InWords(*property, observed.value(*property));
  }
  return text;
}

void SayWhatIsMissing(Session& session) {
  const Observed& observed = session.observed();
  if (observed.callbacks() == 0) return;  // Stopped early: nothing is known of the device.
  if (observed.value(kBatteryLevel) == Value()) {
    session.output().Say("No battery level is known: this device has no battery, or hides it.");
  }
  if (observed.value(kWirelessCharger) == Value(false) &&
      observed.value(kDockCharger) == Value(false)) {
    session.output().Say("No wireless charger and no dock charger is online.");
  }
}

int Fail(Session& session, const std::string& why) {
  session.output().Summary(false, "Demo FAILED: " + why + ".", session.observed());
  return EXIT_FAILURE;
}

// Shows what a device has, without being able to change it.
int ObserveDevice(const Options& options, Session& session) {
  Output& output = session.output();
  const auto end = Session::Clock::now() + options.duration.value_or(std::chrono::seconds(5));
  output.Heading("A client registers with the device '" + std::string(options.device->name) + "'");
  output.Say("Values arrive in the client's callback, on a thread of the library.");
  output.Explain("   Lines with ** come from the device itself.");
  BatteryClient client(session.events());
  if (!client.Register()) return Fail(session, "a registration was refused");
  const auto heard = [&] { return session.observed().callbacks() > 0; };
  if (session.WaitFor(heard, kReportLimit) == Session::Wake::kTime) {
    return Fail(session, "the health service has not reported anything within " +
                             std::to_string(kReportLimit.count()) + " s");
  }
  session.WaitFor([] { return false; }, end - Session::Clock::now());
  SayWhatIsMissing(session);
  const Observed& observed = session.observed();
  output.Summary(true,
                 "Demo done: the callback was called " + Counted(observed.callbacks(), "time") +
                     "; " + Findings(observed) + ".",
                 observed);
  return EXIT_SUCCESS;
}

}  // namespace

int Demo(const Options& options, Output& output) {
  Session session(options, output);
  BatteryDriver* const driver = session.device().battery_driver();
  if (driver == nullptr) return ObserveDevice(options, session);
  if (options.duration) {
    Complain("--for: the story of the device '" + std::string(options.device->name) +
             "' has its own length");
    return kExitUsage;
  }
  return TellStory(session, *driver);
}

}  // namespace norvik::qel::tool
