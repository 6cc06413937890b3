#include <utility>

#include "devices/simulated/health.h"
#include "tools/host.h"

namespace norvik::qel::tool {

namespace {

class SimulatedDevice : public Device, public BatteryDriver {
 public:
  explicit SimulatedDevice(DeviceObserver observer) : health_(Translate(std::move(observer))) {}

  void Start(bool verbose) override {
    BecomeHostProcess(verbose);
    StartService();
  }
  BatteryDriver* battery_driver() override { return this; }

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

 private:
  simulated::Health health_;
  bool running_ = false;
};

}  // namespace

std::unique_ptr<Device> MakeSimulatedDevice(DeviceObserver observer) {
  return std::make_unique<SimulatedDevice>(std::move(observer));
}

}  // namespace norvik::qel::tool
