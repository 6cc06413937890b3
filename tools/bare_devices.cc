// A device without any service, for tests of what the monitor says then.
#include "tools/host.h"

namespace norvik::qel::tool {

namespace {

class BareDevice : public Device {
 public:
  void Start(bool verbose) override { BecomeHostProcess(verbose); }
};

}  // namespace

std::span<const DeviceType> DeviceTypes() {
  static constexpr DeviceType kTypes[] = {
      {.name = "bare",
       .description = "no service at all",
       // NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is the seam's
       .make = [](DeviceObserver) -> std::unique_ptr<Device> {
         return std::make_unique<BareDevice>();
       }},
  };
  return kTypes;
}

}  // namespace norvik::qel::tool
