#include "tools/battery_client.h"
#include "tools/commands.h"
#include "tools/session.h"

namespace norvik::qel::tool {

int Dump(const Options& options, Output& output) {
  Session session(options, output, Session::Events::kHide);
  BatteryClient client(session.events());
  if (!client.Register()) {
    Complain("the library refuses to register a callback");
    return EXIT_FAILURE;
  }
  const auto heard = [&] { return session.observed().callbacks() > 0; };
  const Session::Wake wake = session.WaitFor(heard, kReportLimit);
  if (wake == Session::Wake::kStop) return EXIT_SUCCESS;
  output.ShowDump(client.Dump());
  if (wake == Session::Wake::kEvent) return EXIT_SUCCESS;
  Complain("the health service has not reported anything within 5 s");
  return EXIT_FAILURE;
}

}  // namespace norvik::qel::tool
