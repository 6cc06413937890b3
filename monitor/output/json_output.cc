// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <array>
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
  if (const Severity* severity = std::get_if<Severity>(&value)) return ToJson(*severity);
  if (const Severities* several = std::get_if<Severities>(&value)) {
    Json::Value list(Json::arrayValue);
    for (const Severity severity : *several) list.append(ToJson(severity));
    return list;
  }
  return JsonOf(value);
}

// In the order of DeviceEvent::Kind.
constexpr auto kEventNames =
    std::to_array<const char*>({"service_started", "service_died", "callback_registered",
                                "callback_unregistered", "call_refused", "notice", "reported"});

JsonLine Line(const char* event, WallTime time = std::chrono::system_clock::now()) {
  return JsonLine().Add("time", Iso8601(time)).Add("event", event);
}

class JsonOutput : public Output {
 public:
  void Show(const Event& event) override {
    std::visit([&](const auto& what) { Write(Describe(what, event.time)); }, event.what);
  }

  void Note(const Event& notice) override { Show(notice); }

  void ShowReading(const Property& property, const Value& value) override {
    Write(Line("reading").Add("property", JsonText(property.key)).Add("value", ToJson(value)));
  }

  void ShowDump(std::string_view family, const std::string& text) override {
    Write(Line("dump").Add("family", JsonText(family)).Add("text", text));
  }

  void ShowRecord(const char* event, const Fields& fields) override {
    JsonLine line = Line(event);
    for (const auto& [name, content] : fields) {
      const std::string* const text = std::get_if<std::string>(&content);
      line.Add(name, text != nullptr ? JsonText(*text) : ToJson(std::get<Value>(content)));
    }
    Write(line);
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
              .Add("thermal_deaths", observed.thermal_deaths())
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
    JsonLine line =
        Line(kEventNames.at(static_cast<size_t>(event.kind)), time).Add("service", event.service);
    if (!event.detail.empty()) line.Add("detail", event.detail);
    return line;
  }

  void Write(JsonLine line) {
    if (!device_.empty()) line.Add("device", device_);
    lines_.Write(line.text());
  }
};

}  // namespace

std::unique_ptr<Output> MakeJsonOutput() {
  return std::make_unique<JsonOutput>();
}

}  // namespace norvik::qel::monitor
