// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <chrono>
#include <string>
#include <variant>

#include "output/json.h"
#include "output/output.h"

namespace norvik::qel::monitor {

namespace {

Json::Value ToJson(Severity severity) {
  const auto name = NameOf(severity);
  Json::Value object;
  object["level"] = static_cast<int>(severity);
  object["name"] = name ? JsonText(*name) : Json::Value();
  return object;
}

Json::Value ToJson(const Value& value) {
  if (const int* number = std::get_if<int>(&value)) return *number;
  if (const bool* online = std::get_if<bool>(&value)) return *online;
  if (const float* number = std::get_if<float>(&value)) return JsonNumber(*number);
  if (const Severity* severity = std::get_if<Severity>(&value)) return ToJson(*severity);
  if (const Severities* several = std::get_if<Severities>(&value)) {
    Json::Value list(Json::arrayValue);
    for (const Severity severity : *several) list.append(ToJson(severity));
    return list;
  }
  return {};
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

JsonLine Line(const char* event, WallTime time = std::chrono::system_clock::now()) {
  return JsonLine().Add("time", Iso8601(time)).Add("event", event);
}

class JsonOutput : public Output {
 public:
  void Show(const Event& event) override {
    std::visit([&](const auto& what) { Write(Describe(what, event.time)); }, event.what);
  }

  void ShowReading(const Property& property, const Value& value) override {
    Write(Line("reading").Add("property", JsonText(property.key)).Add("value", ToJson(value)));
  }

  void ShowDump(std::string_view family, const std::string& text) override {
    Write(Line("dump").Add("family", JsonText(family)).Add("text", text));
  }

  void Explain(const std::string& /*text*/) override {}
  void Heading(const std::string& text) override { Write(Line("heading").Add("text", text)); }
  void Say(const std::string& text) override { Write(Line("narration").Add("text", text)); }

  void Summary(bool success, const std::string& text, const Observed& observed) override {
    using Kind = DeviceEvent::Kind;
    Write(Line("summary")
              .Add("success", success)
              .Add("callbacks", observed.callbacks())
              .Add("deaths", observed.count(Kind::kServiceDied, kHealthService))
              .Add("thermal_deaths", observed.count(Kind::kServiceDied, kThermalService) +
                                         observed.count(Kind::kServiceDied, kHidlThermalService))
              .Add("relinks", observed.relinks())
              .Add("refusals", observed.count(Kind::kCallRefused, kHealthService))
              .Add("text", text));
  }

 private:
  static JsonLine Describe(const ValueChange& change, WallTime time) {
    return Line("value", time)
        .Add("property", JsonText(change.property->key))
        .Add("old", ToJson(change.old_value))
        .Add("new", ToJson(change.new_value));
  }

  static JsonLine Describe(const DeviceEvent& event, WallTime time) {
    JsonLine line = Line(EventName(event.kind), time).Add("service", event.service);
    if (!event.detail.empty()) line.Add("detail", event.detail);
    return line;
  }

  void Write(const JsonLine& line) { lines_.Write(line.text()); }
};

}  // namespace

std::unique_ptr<Output> MakeJsonOutput() {
  return std::make_unique<JsonOutput>();
}

}  // namespace norvik::qel::monitor
