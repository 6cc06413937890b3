#include "tools/recording_reader.h"

#include <errno.h>

#include <array>
#include <fstream>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "tools/recording_fields.h"

namespace norvik::qel::tool {

namespace {

using Kind = DeviceEvent::Kind;
constexpr int kHighestInt = std::numeric_limits<int>::max();
constexpr double kLongest = 366.0 * 24 * 60 * 60;  // seconds

// A header that is wanting in something is told from a file that has none.
void ReadHeader(const nlohmann::json& json, Recording& recording) {
  if (!json.is_object() || !json.contains("format")) {
    throw LineError("the header is missing: {\"format\": \"" + std::string(kRecordingFormat) +
                    "\", \"version\": " + std::to_string(kRecordingVersion) + "}");
  }
  RecordingFields fields(json, "");
  fields.Choice("format", std::array{kRecordingFormat});
  const int version = fields.Integer("version", 0, kHighestInt);
  if (version != kRecordingVersion) {
    throw LineError("version " + std::to_string(version) + " is unknown, this program reads " +
                    std::to_string(kRecordingVersion));
  }
  if (fields.Has("device")) recording.device = fields.Text("device");
  if (fields.Has("began")) fields.Text("began");
  fields.CheckAllTaken();
}

// What the lines say, one after the other: some say what has changed since those before.
class EventReader {
 public:
  RecordedEvent Read(const nlohmann::json& json);

 private:
  DeviceEvent ReadBattery(RecordingFields fields);
  void CheckTime(Seconds at);
  void CheckLifetime(const DeviceEvent& event);
  void CheckJoin(const ClientJoined& joined);

  Seconds last_{};
  BatteryReport battery_;
  std::map<std::string, bool> up_;  // the services whose state has been told
  std::set<std::string> joined_;
};

using What = decltype(RecordedEvent::what);

DeviceEvent OfService(Kind kind, RecordingFields& fields, const std::string& key) {
  return {.kind = kind, .service = fields.Choice(key, kServices)};
}

What ReadRegistration(Kind kind, RecordingFields& fields, const std::string& key) {
  DeviceEvent event = OfService(kind, fields, key);
  if (fields.Has("sensor")) event.detail = fields.Text("sensor");
  return event;
}

What ReadRefusal(RecordingFields& fields) {
  DeviceEvent event = OfService(Kind::kCallRefused, fields, "refused");
  event.detail = fields.Text("call");
  if (fields.Has("reason")) event.detail += ": " + fields.Text("reason");
  return event;
}

What ReadNotice(RecordingFields& fields) {
  DeviceEvent event = {.kind = Kind::kNotice, .service = "", .detail = fields.Text("notice")};
  if (fields.Has("service")) event.service = fields.Choice("service", kServices);
  return event;
}

What ReadSensor(Sensor sensor, RecordingFields& fields, const std::string& key) {
  return DeviceEvent{.kind = Kind::kReported,
                     .service = std::string(kSensorService),
                     .report = SensorReport{.sensor = sensor, .value = fields.MaybeNumber(key)}};
}

What ReadTemperature(RecordingFields fields) {
  TemperatureReport report = {.type = fields.Text("type"),
                              .name = fields.Text("name"),
                              .value = std::nullopt,
                              .severity = Severity::kNone};
  if (report.name.empty()) throw LineError("'temperature.name' is empty");
  if (fields.Has("value")) report.value = fields.MaybeNumber("value");
  if (fields.Has("severity")) report.severity = fields.ReadSeverity("severity");
  fields.CheckAllTaken();
  return DeviceEvent{.kind = Kind::kReported,
                     .service = std::string(kThermalService),
                     .report = std::move(report)};
}

What ReadCall(RecordingFields& fields) {
  ClientCalled called = {.property = fields.Text("called"), .value = fields.AnyValue("value")};
  return called;
}

DeviceEvent EventReader::ReadBattery(RecordingFields fields) {
  if (fields.Has("level")) battery_.level = fields.MaybeInteger("level", 0, 100);
  if (fields.Has("cycles")) battery_.cycle_count = fields.MaybeInteger("cycles", 0, kHighestInt);
  if (fields.Has("wireless")) battery_.wireless_online = fields.Flag("wireless");
  if (fields.Has("dock")) battery_.dock_online = fields.Flag("dock");
  fields.CheckAllTaken();
  return {.kind = Kind::kReported, .service = std::string(kHealthService), .report = battery_};
}

RecordedEvent EventReader::Read(const nlohmann::json& json) {
  RecordingFields fields(json, "");
  RecordedEvent event = {.at = Seconds(fields.Number("at", 0, kLongest)), .what = {}};
  CheckTime(event.at);
  if (fields.Has("battery")) {
    event.what = ReadBattery(fields.Object("battery"));
  } else if (fields.Has("proximity")) {
    event.what = ReadSensor(Sensor::kProximity, fields, "proximity");
  } else if (fields.Has("hinge_angle")) {
    event.what = ReadSensor(Sensor::kHingeAngle, fields, "hinge_angle");
  } else if (fields.Has("temperature")) {
    event.what = ReadTemperature(fields.Object("temperature"));
  } else if (fields.Has("started")) {
    event.what = OfService(Kind::kServiceStarted, fields, "started");
  } else if (fields.Has("died")) {
    event.what = OfService(Kind::kServiceDied, fields, "died");
  } else if (fields.Has("registered")) {
    event.what = ReadRegistration(Kind::kCallbackRegistered, fields, "registered");
  } else if (fields.Has("unregistered")) {
    event.what = ReadRegistration(Kind::kCallbackUnregistered, fields, "unregistered");
  } else if (fields.Has("refused")) {
    event.what = ReadRefusal(fields);
  } else if (fields.Has("notice")) {
    event.what = ReadNotice(fields);
  } else if (fields.Has("join")) {
    event.what = ClientJoined{.family = fields.Choice("join", kClientFamilies)};
  } else if (fields.Has("called")) {
    event.what = ReadCall(fields);
  } else {
    throw LineError("it does not say what happened: none of its keys is the name of an event");
  }
  fields.CheckAllTaken();
  if (const auto* device_event = std::get_if<DeviceEvent>(&event.what))
    CheckLifetime(*device_event);
  if (const auto* joined = std::get_if<ClientJoined>(&event.what)) CheckJoin(*joined);
  return event;
}

void EventReader::CheckTime(Seconds at) {
  if (at < last_) throw LineError("time goes backwards: 'at' is less than in a line before");
  last_ = at;
}

// A service that has not been mentioned is up: it runs from the beginning, unless it starts later.
void EventReader::CheckLifetime(const DeviceEvent& event) {
  const bool starts = event.kind == Kind::kServiceStarted;
  if (!starts && event.kind != Kind::kServiceDied) return;
  if (!starts && event.service == kSensorService) {
    throw LineError("the sensor service cannot die: no client survives that");
  }
  const auto known = up_.find(event.service);
  if (known != up_.end() && known->second == starts) {
    throw LineError("the " + event.service + " service is " + (starts ? "up" : "down") +
                    " already");
  }
  up_[event.service] = starts;
}

void EventReader::CheckJoin(const ClientJoined& joined) {
  if (joined_.insert(joined.family).second) return;
  throw LineError("the " + joined.family + " client has joined already");
}

}  // namespace

Recording ReadRecording(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  Recording recording;
  EventReader reader;
  std::string line;
  int number = 0;
  while (std::getline(file, line)) {
    ++number;
    try {
      const nlohmann::json json = ParseLine(line);
      if (number == 1) {
        ReadHeader(json, recording);
        continue;
      }
      RecordedEvent event = reader.Read(json);
      event.line = number;
      event.text = line;
      recording.events.push_back(std::move(event));
    } catch (const LineError& error) {
      throw std::runtime_error(path + ":" + std::to_string(number) + ": " + error.what());
    }
  }
  if (!file.eof() || file.bad()) {
    throw std::runtime_error("cannot read " + path + ": " + std::generic_category().message(errno));
  }
  if (number == 0) throw std::runtime_error(path + ": the file is empty");
  return recording;
}

}  // namespace norvik::qel::tool
