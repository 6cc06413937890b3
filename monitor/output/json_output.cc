// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>

#include "output/output.h"

namespace norvik::qel::monitor {

namespace {

// Keys in the order in which they are set: the time leads every line.
using Json = nlohmann::ordered_json;

Json ToJson(Severity severity) {
  const auto name = NameOf(severity);
  return {{"level", static_cast<int>(severity)}, {"name", name ? Json(*name) : Json()}};
}

Json ToJson(const Value& value) {
  if (const int* number = std::get_if<int>(&value)) return *number;
  if (const bool* online = std::get_if<bool>(&value)) return *online;
  // Of a float that is written as a double everybody would see where it ends.
  if (const float* number = std::get_if<float>(&value)) return std::round(*number * 1e3) / 1e3;
  if (const Severity* severity = std::get_if<Severity>(&value)) return ToJson(*severity);
  if (const Severities* several = std::get_if<Severities>(&value)) {
    Json list = Json::array();
    for (const Severity severity : *several) list.push_back(ToJson(severity));
    return list;
  }
  return nullptr;
}

const char* EventName(DeviceEvent::Kind kind) {
  switch (kind) {
    case DeviceEvent::Kind::kServiceStarted:
      return "service_started";
    case DeviceEvent::Kind::kServiceDied:
      return "service_died";
    case DeviceEvent::Kind::kCallbackRegistered:
      return "callback_registered";
    case DeviceEvent::Kind::kCallbackUnregistered:
      return "callback_unregistered";
    case DeviceEvent::Kind::kCallRefused:
      return "call_refused";
    case DeviceEvent::Kind::kNotice:
      return "notice";
    case DeviceEvent::Kind::kReported:
      return "reported";
  }
  return "notice";
}

Json Line(const char* event, WallTime time = std::chrono::system_clock::now()) {
  return {{"time", Iso8601(time)}, {"event", event}};
}

class JsonOutput : public Output {
 public:
  void Show(const Event& event) override {
    std::visit([&](const auto& what) { Write(Describe(what, event.time)); }, event.what);
  }

  void ShowReading(const Property& property, const Value& value) override {
    Json line = Line("reading");
    line["property"] = property.key;
    line["value"] = ToJson(value);
    Write(line);
  }

  void ShowDump(std::string_view family, const std::string& text) override {
    Json line = Line("dump");
    line["family"] = family;
    line["text"] = text;
    Write(line);
  }

  void Explain(const std::string& /*text*/) override {}
  void Heading(const std::string& text) override { WriteText("heading", text); }
  void Say(const std::string& text) override { WriteText("narration", text); }

  void Summary(bool success, const std::string& text, const Observed& observed) override {
    Json line = Line("summary");
    line["success"] = success;
    line["callbacks"] = observed.callbacks();
    line["deaths"] = observed.count(DeviceEvent::Kind::kServiceDied, kHealthService);
    line["thermal_deaths"] = observed.count(DeviceEvent::Kind::kServiceDied, kThermalService) +
                             observed.count(DeviceEvent::Kind::kServiceDied, kHidlThermalService);
    line["relinks"] = observed.relinks();
    line["refusals"] = observed.count(DeviceEvent::Kind::kCallRefused, kHealthService);
    line["text"] = text;
    Write(line);
  }

 private:
  static Json Describe(const ValueChange& change, WallTime time) {
    Json line = Line("value", time);
    line["property"] = change.property->key;
    line["old"] = ToJson(change.old_value);
    line["new"] = ToJson(change.new_value);
    return line;
  }

  static Json Describe(const DeviceEvent& event, WallTime time) {
    Json line = Line(EventName(event.kind), time);
    line["service"] = event.service;
    if (!event.detail.empty()) line["detail"] = event.detail;
    return line;
  }

  void WriteText(const char* event, const std::string& text) {
    Json line = Line(event);
    line["text"] = text;
    Write(line);
  }

  void Write(const Json& line) {
    // Bytes that are no UTF-8 are replaced: a device's text must not end the program.
    lines_.Write(line.dump(-1, ' ', false, Json::error_handler_t::replace));
  }
};

}  // namespace

std::unique_ptr<Output> MakeJsonOutput() {
  return std::make_unique<JsonOutput>();
}

}  // namespace norvik::qel::monitor
