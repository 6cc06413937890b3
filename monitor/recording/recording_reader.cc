// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recording_reader.h"

#include <errno.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/decimal.h"
#include "clients/subjects.h"
#include "recording/recording_events.h"

namespace norvik::qel::monitor {

namespace {

// Returns the version. A missing header and an incomplete one have different messages.
int ReadHeader(const Json::Value& line, Recording& recording) {
  if (!line.isObject() || !line.isMember("format")) {
    throw LineError("the header is missing: {\"format\": \"" + std::string(kRecordingFormat) +
                    "\", \"version\": " + std::to_string(kRecordingVersion) + "}");
  }
  RecordingFields fields(line, "");
  fields.Choice("format", std::array{kRecordingFormat});
  const int version = fields.Integer("version", 0, kHighestInt);
  if (version < 1 || version > kRecordingVersion) {
    throw LineError("version " + std::to_string(version) + " is unknown, this program reads 1 to " +
                    std::to_string(kRecordingVersion));
  }
  if (fields.Has("device")) recording.device = fields.Text("device");
  if (fields.Has("began")) {
    const std::string began = fields.Text("began");
    recording.began = ParseIso8601(began);
    if (!recording.began) {
      throw LineError("'began' is '" + began + "', use a time such as 2026-11-21T10:00:03.120Z");
    }
  }
  fields.CheckAllTaken();
  return version;
}

// The feature that version 1 does not have; empty if version 1 has the event.
std::string NewsOf(const RecordedWhat& what) {
  if (const auto* joined = std::get_if<ClientJoined>(&what)) {
    return joined->subject == FamilyOfSubject(joined->subject) ? "" : "a client of one property";
  }
  if (const auto* event = std::get_if<DeviceEvent>(&what)) {
    const auto* const sensor = std::get_if<SensorReport>(&event->report);
    if (sensor != nullptr && sensor->values.size() > 1) return "a list of readings";
    const bool is_gone = sensor != nullptr && sensor->values.empty();
    return is_gone || std::holds_alternative<TemperatureGone>(event->report) ? "'gone'" : "";
  }
  return std::holds_alternative<ClientCalled>(what) ? "" : "a scenario's event";
}

// Parses the lines in order. A line may depend on the lines before it.
class EventReader {
 public:
  explicit EventReader(int version) : version_(version) {}

  RecordedEvent Read(RecordingFields fields) {
    RecordedEvent event = {.at = ReadTime(fields), .what = ReadWhat(fields, battery_)};
    const std::string news = version_ == 1 ? NewsOf(event.what) : "";
    if (!news.empty()) throw LineError(news + " needs version 2, and the header says 1");
    fields.CheckAllTaken();
    return event;
  }

 private:
  Seconds ReadTime(RecordingFields& fields) {
    constexpr double kLongest = 366.0 * 24 * 60 * 60;  // seconds
    const bool has_after = version_ > 1 && fields.Has("after");
    if (version_ > 1 && !fields.Has("at")) {
      if (has_after) last_ += Seconds(fields.Number("after", 0, kLongest));
      if (last_.count() > kLongest) throw LineError("that is more than a year after the beginning");
      return last_;
    }
    if (has_after) throw LineError("'at' and 'after' exclude each other");
    const Seconds at(fields.Number("at", 0, kLongest));
    if (at < last_) {
      throw LineError("time goes backwards: 'at' is " + DecimalText(at.count()) + " after " +
                      DecimalText(last_.count()) + " in a line before");
    }
    return last_ = at;
  }

  const int version_;  // of the file
  Seconds last_{};
  BatteryReport battery_;
};

}  // namespace

std::string TitleOf(const Recording& recording) {
  const std::string name = recording.name.substr(recording.name.rfind('/') + 1);
  return recording.device.empty() ? name : name + ": the device '" + recording.device + "'";
}

std::string PlaceOf(const Recording& recording, const RecordedEvent& event) {
  if (event.line == 0) return recording.name;  // an implicit event
  return recording.name + ":" + std::to_string(event.line);
}

Recording ReadRecording(std::istream& text, const std::string& name) {
  Recording recording = {.name = name, .device = {}, .events = {}};
  std::optional<EventReader> reader;
  std::string line;
  int number = 0;
  while (std::getline(text, line)) {
    ++number;
    try {
      const Json::Value parsed = ParseJson(line);
      if (!reader) {
        reader.emplace(ReadHeader(parsed, recording));
        continue;
      }
      RecordedEvent event = reader->Read({parsed, ""});
      event.line = number;
      event.text = line;
      recording.events.push_back(std::move(event));
    } catch (const LineError& error) {
      throw std::runtime_error(name + ":" + std::to_string(number) + ": " + error.what());
    }
  }
  if (number == 0 && text.eof()) throw std::runtime_error(name + ": the file is empty");
  return recording;
}

Recording ReadRecording(const std::string& path) {
  if (path == kStandardStream) return ReadRecording(std::cin, "standard input");
  errno = 0;
  // A directory can be opened, and with libc++ it reads as an empty file.
  std::error_code unknown;
  if (std::filesystem::is_directory(path, unknown)) {
    throw std::runtime_error("cannot read " + path + ": " +
                             std::generic_category().message(EISDIR));
  }
  std::ifstream file(path, std::ios::binary);
  Recording recording = ReadRecording(file, path);
  if (!file.eof() || file.bad()) {
    throw std::runtime_error("cannot read " + path + ": " + std::generic_category().message(errno));
  }
  return recording;
}

void CheckIsAnotherFile(const std::string& output, const std::string& recording) {
  std::error_code unknown;  // a file that does not exist is no other's
  const bool is_same =
      std::filesystem::is_regular_file(output, unknown) &&
      std::filesystem::equivalent(output, recording == kStandardStream ? "/dev/stdin" : recording,
                                  unknown);
  if (!is_same) return;
  throw std::runtime_error("cannot write " + output + ": it is the recording itself");
}

}  // namespace norvik::qel::monitor
