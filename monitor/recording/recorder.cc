// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recorder.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "clients/subjects.h"
#include "output/json.h"
#include "output/write.h"

namespace norvik::qel::monitor {

namespace {

std::string InWords(int error) {
  return std::generic_category().message(error);
}

int Open(const std::string& path, ExistingFile existing) {
  if (path == kStandardStream) return fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  const int how = existing == ExistingFile::kRefuse ? O_EXCL : O_TRUNC;
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | how, 0666);
  if (fd >= 0) return fd;
  std::error_code unknown;
  if (std::filesystem::is_directory(path, unknown)) errno = EISDIR;  // whatever `existing` is
  if (errno == EEXIST) {
    throw std::runtime_error(path + " exists already; --force overwrites it");
  }
  throw std::runtime_error("cannot write " + path + ": " + InWords(errno));
}

Json::Value ToJson(std::optional<int> number) {
  return number ? Json::Value(*number) : Json::Value();
}

// The name of the severity, or its number if it has no name.
Json::Value NameOrNumber(Severity severity) {
  const auto name = NameOf(severity);
  return name ? JsonText(*name) : Json::Value(static_cast<int>(severity));
}

// Adds the members that describe an event to `line`. Events that are not recorded add nothing.
struct Describer {
  JsonLine& line;
  std::optional<BatteryReport>& battery;  // the last report: a line holds only changed values

  void operator()(const DeviceEvent& event) {
    using Kind = DeviceEvent::Kind;
    if (event.kind == Kind::kReported) return std::visit(*this, event.report);
    if (event.kind == Kind::kNotice) {
      line.Add("notice", event.detail);
      if (!event.service.empty()) line.Add("service", event.service);
      return;
    }
    for (const auto& [key, kind] : kServiceEvents) {
      if (kind == event.kind) line.Add(key, event.service);
    }
    if (event.kind == Kind::kCallRefused) {
      // The operation refused comes before the reason.
      const size_t colon = event.detail.find(": ");
      line.Add("call", event.detail.substr(0, colon));
      if (colon != std::string::npos) line.Add("reason", event.detail.substr(colon + 2));
    } else if (!event.detail.empty()) {
      line.Add("sensor", event.detail);
    }
  }
  void operator()(const BatteryReport& now) {
    const auto before = std::exchange(battery, now);
    Json::Value changes(Json::objectValue);
    const auto add = [&](const char* key, auto BatteryReport::*part, const Json::Value& value) {
      if (!before || (*before).*part != now.*part) changes[key] = value;
    };
    add("level", &BatteryReport::level, ToJson(now.level));
    add("cycles", &BatteryReport::cycle_count, ToJson(now.cycle_count));
    add("wireless", &BatteryReport::wireless_online, now.wireless_online);
    add("dock", &BatteryReport::dock_online, now.dock_online);
    line.Add("battery", changes);
  }
  void operator()(const SensorReport& report) {
    const std::string_view key = PropertyOf(report.sensor).key;
    if (report.values.empty()) {
      line.Add("gone", JsonText(key));
      return;
    }
    Json::Value values(Json::arrayValue);
    for (const auto value : report.values) values.append(JsonNumber(value));
    line.Add(key, values.size() == 1 ? values[0] : values);
  }
  void operator()(const TemperatureReport& report) {
    Json::Value temperature;
    temperature["type"] = report.type;
    temperature["name"] = report.name;
    temperature["value"] = JsonNumber(report.value);
    temperature["severity"] = NameOrNumber(report.severity);
    line.Add("temperature", temperature);
  }
  void operator()(const TemperatureGone& gone) { line.Add("gone", gone.type + ":" + gone.name); }
  void operator()(const ClientJoined& joined) { line.Add("join", joined.subject); }
  void operator()(const ClientLeft& left) { line.Add("leave", left.subject); }
  void operator()(const ClientCalled& called) {
    const auto* const severity = std::get_if<Severity>(&called.value);
    line.Add("called", called.property);
    line.Add("value", severity != nullptr ? NameOrNumber(*severity) : JsonOf(called.value));
  }
  void operator()(const Scene& scene) { line.Add("scene", scene.title); }
  void operator()(const Narration& narration) { line.Add("say", narration.text); }
  // Reports of sensors that the library does not use; questions and expectations, which are not
  // events; refusals, which the service reports when they take effect.
  template <typename What>
  void operator()(const What& /*what*/) {}
};

}  // namespace

Recorder::Recorder(const std::string& path, ExistingFile existing, std::string_view device)
    : path_(path), begin_(std::chrono::system_clock::now()), fd_(Open(path, existing)) {
  const JsonLine header = JsonLine()
                              .Add("format", JsonText(kRecordingFormat))
                              .Add("version", kRecordingVersion)
                              .Add("device", JsonText(device))
                              .Add("began", Iso8601(begin_));
  if (WriteLine(header.text())) return;
  close(fd_);
  // Do not leave a new file without a complete header.
  if (existing == ExistingFile::kRefuse && path_ != kStandardStream) unlink(path_.c_str());
  throw std::runtime_error(failure_);
}

Recorder::~Recorder() {
  close(fd_);
}

bool Recorder::Note(const Event& event) {
  if (const auto* change = std::get_if<ValueChange>(&event.what)) {
    return Write(
        ClientCalled{.property = std::string(change->property->key), .value = change->new_value},
        event.time);
  }
  return Write(std::get<DeviceEvent>(event.what), event.time);
}

void Recorder::NoteAct(const RecordedWhat& what) {
  static_cast<void>(Write(what, std::chrono::system_clock::now()));
}

bool Recorder::Write(const RecordedWhat& what, WallTime time) {
  // Times never run backwards in a recording, even when the clock is set.
  last_ = std::max(last_, Seconds(time - begin_));
  JsonLine line;
  std::visit(Describer{line, battery_}, what);
  if (line.empty()) return !is_closed_;
  return WriteLine(JsonLine().Add("at", std::round(last_.count() * 1e3) / 1e3).Add(line).text());
}

bool Recorder::WriteLine(std::string line) {
  if (is_closed_) return false;
  line += '\n';
  const std::string_view rest = WriteAll(fd_, line);
  if (rest.empty()) {
    ++line_count_;
    return true;
  }
  is_closed_ = true;
  if (errno == EPIPE) return false;  // the reader of standard output has left
  failure_ = "cannot write " + path_ + ": " + InWords(errno);
  // Half a line would make the file unreadable.
  const off_t half = static_cast<off_t>(line.size() - rest.size());
  static_cast<void>(ftruncate(fd_, lseek(fd_, 0, SEEK_CUR) - half) == 0);
  return false;
}

}  // namespace norvik::qel::monitor
