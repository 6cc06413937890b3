// Devices that lack something, for tests of what the monitor says then.
#include <android/sensor.h>

#include <utility>

#include "devices/simulated/health.h"
#include "devices/simulated/sensor_hub.h"
#include "tools/host.h"

namespace norvik::qel::tool {

namespace {

class BareDevice : public Device {
 public:
  void Start(const DeviceSetup& setup) override { BecomeHostProcess(setup); }
};

// Its proximity sensor has nothing to report yet.
class FlatPhone : public Device {
 public:
  explicit FlatPhone(DeviceObserver observer)
      : health_(Translate(observer)), sensors_(Translate(std::move(observer))) {
    sensors_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
  }

  void Start(const DeviceSetup& setup) override {
    BecomeHostProcess(setup);
    health_.Start();
    sensors_.Start();
  }

 private:
  simulated::Health health_;
  simulated::SensorHub sensors_;
};

}  // namespace

std::span<const DeviceType> DeviceTypes() {
  static constexpr DeviceType kTypes[] = {
      {.name = "bare",
       .description = "no service at all",
       .has_sensor_service = true,  // it is awaited in vain
       // NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is the seam's
       .make = [](DeviceObserver) -> std::unique_ptr<Device> {
         return std::make_unique<BareDevice>();
       }},
      {.name = "flat",
       .description = "a phone that does not fold, under nobody's control",
       .has_sensor_service = true,
       .make = [](DeviceObserver observer) -> std::unique_ptr<Device> {
         return std::make_unique<FlatPhone>(std::move(observer));
       }},
  };
  return kTypes;
}

}  // namespace norvik::qel::tool
