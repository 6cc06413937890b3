// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Functions that the devices of a host share.
#pragma once

#include "clients/device.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::monitor {

std::unique_ptr<Device> MakeSimulatedDevice(DeviceObserver observer);
std::unique_ptr<Device> MakeLinuxDevice(DeviceObserver observer);

// Sets the log level and starts the binder threads, which the library needs.
void BecomeHostProcess(const DeviceSetup& setup);

// Returns an observer for services that passes their events on to `observer` as DeviceEvents.
// Services report in the platform's types, which the monitor's core cannot include.
services::ServiceObserver ToServiceObserver(DeviceObserver observer);

}  // namespace norvik::qel::monitor
