#include <android/sensor.h>

#include <utility>

#include "devices/simulated/health.h"
#include "devices/simulated/sensor_hub.h"
#include "tools/host.h"

namespace norvik::qel::tool {

namespace {

// A folding phone, closed, with nothing near it.
class SimulatedDevice : public Device, public BatteryDriver, public SensorDriver {
 public:
  explicit SimulatedDevice(DeviceObserver observer)
      : health_(Translate(observer)), sensors_(Translate(std::move(observer))) {
    sensors_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    sensors_.Add(ASENSOR_TYPE_HINGE_ANGLE, "hinge angle");
    sensors_.Report(ASENSOR_TYPE_PROXIMITY, 5);
    sensors_.Report(ASENSOR_TYPE_HINGE_ANGLE, 0);
  }

  void Start(const DeviceSetup& setup) override {
    BecomeHostProcess(setup);
    StartService();
    if (!setup.sensors_late) StartSensorService();
  }
  BatteryDriver* battery_driver() override { return this; }
  SensorDriver* sensor_driver() override { return this; }

  void SetLevel(int percent) override { health_.SetLevel(percent); }
  void SetCycleCount(int cycles) override { health_.SetCycleCount(cycles); }
  void SetWirelessOnline(bool online) override { health_.SetWirelessOnline(online); }
  void SetDockOnline(bool online) override { health_.SetDockOnline(online); }

  void KillService() override {
    running_ = false;
    health_.Kill();
  }

  void StartService() override {
    if (std::exchange(running_, true)) return;
    health_.Start();
  }

  void RefuseNextRegistration() override {
    health_.on(devices::HealthOperation::kRegisterCallback)
        .Then(standin::Outcome::Exception(EX_ILLEGAL_STATE, "not ready yet"));
  }

  void SetProximity(float centimetres) override {
    sensors_.Report(ASENSOR_TYPE_PROXIMITY, centimetres);
  }

  void SetHingeAngles(const std::vector<float>& degrees) override {
    std::vector<devices::SensorReading> readings;
    readings.reserve(degrees.size());
    for (const float angle : degrees) {
      readings.push_back({.type = ASENSOR_TYPE_HINGE_ANGLE, .value = angle});
    }
    sensors_.Report(readings);
  }

  void StartSensorService() override { sensors_.Start(); }

 private:
  simulated::Health health_;
  bool running_ = false;
  simulated::SensorHub sensors_;
};

}  // namespace

std::unique_ptr<Device> MakeSimulatedDevice(DeviceObserver observer) {
  return std::make_unique<SimulatedDevice>(std::move(observer));
}

}  // namespace norvik::qel::tool
