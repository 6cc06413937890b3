// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A recording: what a device went through, and when its clients were called. A scenario is one that
// also says what is to be expected.
#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "clients/device.h"

namespace norvik::qel::monitor {

using Seconds = std::chrono::duration<double>;

// Clients of the library register with it, or deregister.
struct ClientJoined {
  std::string subject;  // a family, or the key of one of its properties
};

struct ClientLeft {
  std::string subject;
};

// A client's callback was called.
struct ClientCalled {
  std::string property;  // its key
  Value value;
};

// For the reader of the output.
struct Scene {
  std::string title;
};

struct Narration {
  std::string text;
};

// What getters are asked, and what they are to answer.
struct Question {
  std::string family;  // one of kQuestions
  std::vector<std::pair<std::string, Value>> answers;
};

// No client is called that no expectation speaks of.
struct Silence {
  std::string subject;
};

// Something that comes of itself: clients that are called, what the services see of the library.
struct Expectation {
  std::variant<ClientCalled, DeviceEvent, Silence> what;
  Seconds within;  // real time; all of it for a silence
};

using RecordedWhat = std::variant<DeviceEvent, ClientJoined, ClientLeft, ClientCalled, Scene,
                                  Narration, Refusal, Question, Expectation>;

struct RecordedEvent {
  Seconds at;  // since the beginning
  RecordedWhat what;
  // Where it stands in the file, if anywhere, and what stands there.
  int line = 0;
  std::string text = {};
};

struct Recording {
  std::string name;    // of the file
  std::string device;  // empty when the file does not say
  std::optional<WallTime> began = {};
  std::vector<RecordedEvent> events;
};

// The name of standard input or output where a file is expected.
inline constexpr std::string_view kStandardStream = "-";

inline constexpr std::string_view kRecordingFormat = "quorvel recording";
// What is written; all versions from the first on are read.
inline constexpr int kRecordingVersion = 2;

inline constexpr std::string_view kBatteryFamily = "battery";
inline constexpr std::string_view kSensorFamily = "sensors";
inline constexpr std::string_view kThermalFamily = "thermal";
inline constexpr std::array kClientFamilies = {kBatteryFamily, kSensorFamily, kThermalFamily};

inline constexpr std::string_view kBatteryQuestion = "battery";
inline constexpr std::string_view kTemperaturesQuestion = "temperatures";
inline constexpr std::string_view kLimitsQuestion = "bcl";
inline constexpr std::array kQuestions = {kBatteryQuestion, kTemperaturesQuestion, kLimitsQuestion};

inline constexpr std::array kServices = {kHealthService, kSensorService, kThermalService,
                                         kHidlThermalService};

// What a service tells of itself, by the key at which a line names the service.
struct ServiceEventKey {
  const char* key;
  DeviceEvent::Kind kind;
};
inline constexpr ServiceEventKey kServiceEvents[] = {
    {"started", DeviceEvent::Kind::kServiceStarted},
    {"died", DeviceEvent::Kind::kServiceDied},
    {"registered", DeviceEvent::Kind::kCallbackRegistered},
    {"unregistered", DeviceEvent::Kind::kCallbackUnregistered},
    {"refused", DeviceEvent::Kind::kCallRefused}};
// Those that the library's calls lead to.
inline constexpr auto kLibraryEvents = std::span(kServiceEvents).subspan<2>();

inline constexpr std::array kSensors = {Sensor::kProximity, Sensor::kHingeAngle};

// "demo.jsonl: the device 'simulated'".
std::string TitleOf(const Recording& recording);
// Where something is wrong: "demo.jsonl:12", or the name alone for what stands in no line.
std::string PlaceOf(const Recording& recording, const RecordedEvent& event);

}  // namespace norvik::qel::monitor
