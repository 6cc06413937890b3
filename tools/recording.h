// A recording: what a device went through, and when its clients were called.
#pragma once

#include <array>
#include <chrono>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tools/event.h"

namespace norvik::qel::tool {

using Seconds = std::chrono::duration<double>;

// A client of one of the library's families has registered with it.
struct ClientJoined {
  std::string family;  // one of kClientFamilies
};

// A client's callback was called.
struct ClientCalled {
  std::string property;  // its key
  Value value;
};

struct RecordedEvent {
  Seconds at;  // since the beginning
  std::variant<DeviceEvent, ClientJoined, ClientCalled> what;
  // Where it stands in the file, and what stands there.
  int line = 0;
  std::string text = {};
};

struct Recording {
  std::string device;  // empty when the file does not say
  std::vector<RecordedEvent> events;
};

inline constexpr std::string_view kRecordingFormat = "quorvel recording";
inline constexpr int kRecordingVersion = 1;

inline constexpr std::string_view kBatteryFamily = "battery";
inline constexpr std::string_view kSensorFamily = "sensors";
inline constexpr std::string_view kThermalFamily = "thermal";
inline constexpr std::array kClientFamilies = {kBatteryFamily, kSensorFamily, kThermalFamily};

inline constexpr std::array kServices = {kHealthService, kSensorService, kThermalService,
                                         kHidlThermalService};

}  // namespace norvik::qel::tool
