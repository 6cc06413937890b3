#include <utility>

#include "devices/linux/health.h"
#include "tools/host.h"

namespace norvik::qel::tool {

namespace {

class LinuxDevice : public Device {
 public:
  explicit LinuxDevice(DeviceObserver observer) : health_(Translate(std::move(observer))) {}
  ~LinuxDevice() override { health_.Stop(); }

  void Start(const DeviceSetup& setup) override {
    BecomeHostProcess(setup);
    health_.Start();
  }

 private:
  linux_device::Health health_;
};

}  // namespace

std::unique_ptr<Device> MakeLinuxDevice(DeviceObserver observer) {
  return std::make_unique<LinuxDevice>(std::move(observer));
}

}  // namespace norvik::qel::tool
