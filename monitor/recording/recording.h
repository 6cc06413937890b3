// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A recording: the events of a device and the callbacks of the library's clients. A scenario is a
// recording that also states what must happen.
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
#include "clients/subjects.h"

namespace norvik::qel::monitor {

using Seconds = std::chrono::duration<double>;

// Clients register with the library (ClientJoined) or deregister (ClientLeft).
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

// A heading and a sentence, printed for the user when the recording is played.
struct Scene {
  std::string title;
};

struct Narration {
  std::string text;
};

// Calls of getters, with the answers that they must return.
struct Question {
  std::string family;  // one of kQuestions
  std::vector<std::pair<std::string, Value>> answers;
};

// Expects no callback for the subject, except callbacks that other expectations name.
struct Silence {
  std::string subject;
};

// A callback or a call of the library that must occur within a time, or a silence.
struct Expectation {
  std::variant<ClientCalled, DeviceEvent, Silence> what;
  Seconds within;  // real time; a silence lasts all of it
};

using RecordedWhat = std::variant<DeviceEvent, ClientJoined, ClientLeft, ClientCalled, Scene,
                                  Narration, Refusal, Question, Expectation>;

struct RecordedEvent {
  Seconds at;  // since the beginning
  RecordedWhat what;
  // The line number in the file and the text of the line; 0 and empty if the event is implicit.
  int line = 0;
  std::string text = {};
};

struct Recording {
  std::string name;    // the file name
  std::string device;  // empty if the header does not name it
  std::optional<WallTime> began = {};
  std::vector<RecordedEvent> events;
};

// The file name that stands for standard input or output.
inline constexpr std::string_view kStandardStream = "-";

inline constexpr std::string_view kRecordingFormat = "quorvel recording";
// The version that is written. All versions up to this one are read.
inline constexpr int kRecordingVersion = 2;

inline constexpr std::string_view kBatteryQuestion = "battery";
inline constexpr std::string_view kTemperaturesQuestion = "temperatures";
inline constexpr std::string_view kLimitsQuestion = "bcl";
inline constexpr std::array kQuestions = {kBatteryQuestion, kTemperaturesQuestion, kLimitsQuestion};

inline constexpr std::array kServices = {kHealthService, kSensorService, kThermalService,
                                         kHidlThermalService};

// The event kind for each key of a line; the key's value is the name of the service.
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
// The events that are caused by calls of the library.
inline constexpr auto kLibraryEvents = std::span(kServiceEvents).subspan<2>();

inline constexpr std::array kSensors = {Sensor::kProximity, Sensor::kHingeAngle};

// "demo.jsonl: the device 'simulated'".
std::string TitleOf(const Recording& recording);
// The place of an event for messages: "demo.jsonl:12", or the file name alone without a line.
std::string PlaceOf(const Recording& recording, const RecordedEvent& event);

}  // namespace norvik::qel::monitor
