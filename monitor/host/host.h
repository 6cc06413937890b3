// What the devices of a host have in common.
#pragma once

#include "devices/common/device_event.h"
#include "tools/device.h"

namespace norvik::qel::tool {

std::unique_ptr<Device> MakeSimulatedDevice(DeviceObserver observer);
std::unique_ptr<Device> MakeLinuxDevice(DeviceObserver observer);

// What the library expects of the program that it runs in.
void BecomeHostProcess(const DeviceSetup& setup);

devices::DeviceObserver Translate(DeviceObserver observer);

}  // namespace norvik::qel::tool
