// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A simulated phone with a sensor hub, a sensor handle, and clients that remember.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "clients.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/log_capture.h"
#include "quorvel/simulated/sensor_hub.h"
#include "waiting.h"

namespace norvik::qel {

inline constexpr int kProximity = ASENSOR_TYPE_PROXIMITY;
inline constexpr int kHinge = ASENSOR_TYPE_HINGE_ANGLE;
inline constexpr int kProximityMinDelayUs = 20'000;

class SensorFixture : public testing::Test {
 protected:
  SensorFixture() {
    hub_.Add(kProximity, "proximity", kProximityMinDelayUs);
    hub_.Add(kHinge, "hinge angle");
    InitSensorInfo(&handle_);
  }
  ~SensorFixture() override { DeinitSensorInfo(&handle_); }

  // Registers with the sensor and takes the first call, which brings the 0 of a sensor that has not
  // reported yet.
  void RegisterProximityAndHearZero(int id = 0) {
    ASSERT_EQ(RegisterProximitySensorCallback(handle_, id, Client<0>, &seen_), 0);
    ASSERT_EQ(seen_.Take(), (Call{0, 0}));
  }
  void RegisterHingeAndHearZero(int id = 0) {
    ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, id, Client<1>, &seen_), 0);
    ASSERT_EQ(seen_.Take(), (Call{1, 0}));
  }

  // Of the service; counts from the start of the test.
  fake::Script& look_ups() { return hub_.on(fake::BinderFunction::kCheckService); }
  int Calls(fake::SensorFunction function) { return hub_.on(function).calls(); }
  std::string Dump() const { return TextOf(DumpSensorInfo, handle_); }
  // How often the sensors have logged this, with this priority.
  int Count(int priority, const std::string& text) const {
    const std::vector<std::string> texts = Log(priority);
    return static_cast<int>(std::count(texts.begin(), texts.end(), text));
  }
  // What the sensors have logged so far, of one priority if one is given.
  std::vector<std::string> Log(int priority = 0) const {
    std::vector<std::string> texts;
    for (const auto& line : log_.Lines("audio_hw_sensor")) {
      if (priority == 0 || line.priority == priority) texts.push_back(line.text);
    }
    return texts;
  }

  fake::LogCapture log_;
  Seen<Call> seen_;
  simulated::SensorHub hub_;
  void* handle_ = nullptr;
};

}  // namespace norvik::qel
