#include "tools/battery_client.h"
#include "tools/commands.h"
#include "tools/options.h"
#include "tools/output.h"

namespace norvik::qel::tool {

int GetBattery(const Options& options, Output& output) {
  // No session: this waits for nothing but the service, and signals may end that at once.
  const std::unique_ptr<Device> device = options.device->make([](const DeviceEvent&) {});
  device->Start(options.verbose);
  BatteryClient client(std::make_shared<EventQueue>());
  for (const BatteryProperty* property : kBatteryProperties) {
    const std::optional<Value> value = client.Read(*property);
    if (!value) {
      Complain("the health service cannot be asked for the " + std::string(property->name));
      return EXIT_FAILURE;
    }
    output.ShowReading(*property, *value);
  }
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::tool
