// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The common base of all families' fixtures, with the includes that most of their tests need.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>
#include <string>

#include "clients.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/gate.h"
#include "quorvel/fake/log_capture.h"
#include "quorvel/fake/platform_scripts.h"
#include "quorvel/fake/service_manager.h"
#include "waiting.h"

namespace norvik::qel {

using fake::BinderFunction;
using fake::Delivery;
using fake::Gate;
using fake::HoldDeliveries;
using fake::Outcome;
using fake::SensorFunction;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// The functions that all families have.
struct Family {
  const char* name;
  const char* log_tag;  // the prefix of its log tags
  void (*init)(void** handle);
  void (*deinit)(void** handle);
  void (*dump)(void* handle, int fd);
};
inline constexpr Family kBattery = {"Battery", "audio_hw_battery", InitBatteryInfo,
                                    DeinitBatteryInfo, DumpBatteryInfo};
inline constexpr Family kSensors = {"Sensors", "audio_hw_sensor", InitSensorInfo, DeinitSensorInfo,
                                    DumpSensorInfo};
inline constexpr Family kThermal = {"Thermal", "audio_hw_thermal", InitThermalInfo,
                                    DeinitThermalInfo, DumpThermalInfo};

// An object of the library whose memory is overwritten when it ends. Any later use ends the
// process, because its locks are invalid.
template <typename Object>
class OverwrittenObject {
 public:
  Object* get() { return object_; }
  void End() {
    object_->Deinitialize();
    object_->~Object();
    std::memset(memory_, 0xff, sizeof memory_);
  }

 private:
  alignas(Object) std::byte memory_[sizeof(Object)];
  Object* const object_ = new (memory_) Object;
};

// A handle, its clients' calls and its log. A derived fixture has the phone as a member,
// initializes the handle, and ends it before the phone is destroyed.
class HandleFixture : public testing::Test {
 protected:
  explicit HandleFixture(const Family& family) : family_(family) {}

  void Init() { family_.init(&handle_); }
  // A test whose cookies are destroyed before the fixture must call this itself.
  void Deinit() {
    slow_.gate.Open();
    EndsInTime([this] { family_.deinit(&handle_); }, "Deinit...()");
  }
  std::string Dump() const { return TextOf(family_.dump, handle_); }
  // The texts that the family has logged with this priority or a higher one.
  std::vector<std::string> Log(int lowest_priority = ANDROID_LOG_DEBUG) const {
    std::vector<std::string> texts;
    for (const auto& line : log_.Lines()) {
      if (line.tag.starts_with(family_.log_tag) && line.priority >= lowest_priority) {
        texts.push_back(line.text);
      }
    }
    return texts;
  }
  std::vector<std::string> Warnings() const { return Log(ANDROID_LOG_WARN); }

  const Family family_;
  fake::LogCapture log_;
  Seen<Call> seen_;
  SlowClient slow_;
  void* handle_ = nullptr;
};

}  // namespace norvik::qel
