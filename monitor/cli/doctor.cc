// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/commands.h"
#include "cli/session.h"
#include "clients/inventory.h"
#include "output/printable.h"
#include "output/terminal.h"

namespace norvik::qel::monitor {

namespace {

using Clock = Session::Clock;
using namespace std::string_literals;

// A look-up that the access policy refuses looks like a missing service.
constexpr char kRefusedLookUp[] =
    "look for 'avc: denied { find }' in the phone's log: the access policy may refuse the look-up "
    "to this process; docs/porting.md lists the lines that a policy needs";

enum class Result { kOk, kWarning, kFailed };
constexpr std::array<std::string_view, 3> kResultNames = {"ok", "warning", "failed"};
constexpr std::array<std::string_view, 3> kResultColours = {kGreen, kYellow, kRed};

// Prints each check when it is done, and counts the results. Does neither once the session has
// stopped: a wait that was interrupted has no result.
class Checks {
 public:
  explicit Checks(Session& session) : session_(session) {}

  void Add(std::string_view subject, const std::string& check, Result result,
           const std::string& detail, const std::string& next_step = {}) {
    if (session_.stopped()) return;
    ++counts_[static_cast<size_t>(result)];
    const std::string_view name = kResultNames[static_cast<size_t>(result)];
    session_.output().ShowRecord("check", {{"subject", std::string(subject)},
                                           {"check", check},
                                           {"result", std::string(name)},
                                           {"detail", detail},
                                           {"next_step", next_step}});
    std::string line = std::string(subject) + ": " + check;
    if (!detail.empty()) line += ": " + detail;
    if (!next_step.empty()) line += "; next: " + next_step;
    const std::string result_cell =
        terminal_.Coloured(name, kResultColours[static_cast<size_t>(result)]) +
        std::string(kResultWidth - name.size(), ' ');
    std::string text = Wrapped(result_cell + Printable(line), terminal_.limit, kResultWidth);
    text.pop_back();
    session_.output().Explain(text);
  }
  // Adds a check that is ok, or else failed or a warning with the next step. Returns `is_ok`.
  bool Check(std::string_view subject, const std::string& check, bool is_ok,
             const std::string& detail, const std::string& next_step,
             Result otherwise = Result::kFailed) {
    Add(subject, check, is_ok ? Result::kOk : otherwise, detail, is_ok ? "" : next_step);
    return is_ok;
  }
  int Finish() {
    const auto [ok, warnings, failed] = counts_;
    const std::string text = std::to_string(ok) + " ok, " + Counted(warnings, "warning") + ", " +
                             std::to_string(failed) + " failed";
    if (!session_.stopped()) {
      session_.output().ShowRecord("summary", {{"success", Value(failed == 0)}, {"text", text}});
      session_.output().Explain("\n" + text);
    }
    if (session_.stopped()) return kExitInterrupted;
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
  }

 private:
  static constexpr size_t kResultWidth = 9;

  Session& session_;
  const Terminal terminal_ = StandardOutput();
  std::array<int, 3> counts_ = {};
};

// Whether the library can use the service.
bool CheckService(const ServiceState& state, Checks& checks) {
  const std::string_view service = state.service;
  if (state.is_declared) {
    checks.Check(service, "declared", *state.is_declared, state.instance,
                 "declare the instance in the device's manifest; or "s + kRefusedLookUp);
    if (!*state.is_declared) return false;
  }
  if (!checks.Check(service, "running, look-up allowed", state.is_found,
                    state.is_found ? "" : state.instance + " is not found",
                    "start the service; if it runs, "s + kRefusedLookUp)) {
    return false;
  }
  const bool answers =
      checks.Check(service, "answers", state.answers, state.answers ? "" : state.error,
                   "look for 'avc: denied { call }' and for a crash of the service in the log");
  checks.Check(service, "death notification possible", state.is_alive != nullptr,
               state.is_alive != nullptr ? "" : state.error,
               "run the client in another process than the service, while the service lives");
  return answers;
}

// Checks that the library's clients receive values.
class LibraryChecks {
 public:
  LibraryChecks(Session& session, Checks& checks)
      : session_(session), checks_(checks), client_(session.events()) {}

  void CheckBattery() {
    if (!CheckRegistered(kHealthService, client_.Join(kBatteryFamily))) return;
    CheckLink(kHealthService, kBatteryFamily, "linked to services = T");
    CheckFirstValue(kHealthService, {kBatteryProperties.begin(), kBatteryProperties.end()});
  }

  void CheckSensors() {
    const bool registered = client_.Join(kSensorFamily);
    for (const SensorProperty* sensor : kSensorProperties) {
      if (!client_.Lacks(*sensor)) continue;
      checks_.Add(kSensorService, std::string(sensor->key), Result::kWarning,
                  "the device has no such sensor, so no callback is registered for it",
                  "nothing, if that is true; otherwise let the sensor service list it");
    }
    const std::vector<const SensorProperty*> sensors = client_.sensors();
    if (registered && sensors.empty()) return;
    std::string names;
    for (const SensorProperty* sensor : sensors) {
      names.append(names.empty() ? "" : ", ").append(sensor->key);
    }
    if (!CheckRegistered(kSensorService, registered, names)) return;
    CheckLink(kSensorService, kSensorFamily, "Poll :T");  // polls while a sensor is enabled
    for (const SensorProperty* sensor : sensors) {
      CheckFirstValue(kSensorService, {sensor});
    }
  }

  // Registers for the first temperature that can be watched. Whether the service has accepted the
  // callback cannot be found out: the library only logs it.
  void CheckThermal(std::string_view service) {
    const auto temperatures = PlatformTemperatures();
    if (!checks_.Check(service, "temperatures listed", temperatures.has_value(),
                       temperatures ? std::to_string(temperatures->size()) : "the call fails",
                       "look at the log of the service: it may not be ready")) {
      return;
    }
    CheckTemperatures(service, *temperatures);
    const auto first =
        std::find_if(temperatures->begin(), temperatures->end(),
                     [](const auto& report) { return IsWatchableType(report.type); });
    if (first == temperatures->end()) {
      return checks_.Add(service, "callback registered, first value", Result::kWarning,
                         "not checked: there is no temperature that can be watched",
                         "nothing, if that is true; otherwise let the thermal service list one");
    }
    const std::string key = KeyOf(*first);
    const Property property = PropertyOf(key);
    if (CheckRegistered(service, client_.Join(key), key)) CheckFirstValue(service, {&property});
  }

 private:
  bool CheckRegistered(std::string_view service, bool registered, const std::string& names = {}) {
    return checks_.Check(service, "callback registered", registered, names, kLog);
  }

  // `mark`: what the family's dump has while it is linked.
  void CheckLink(std::string_view service, std::string_view family, const char* mark) {
    const bool is_linked = client_.Dump(family).find(mark) != std::string::npos;
    checks_.Check(service, "link made", is_linked, "", kLog);
  }

  // Waits for a callback of any of the properties.
  void CheckFirstValue(std::string_view service, const std::vector<const Property*>& properties) {
    const auto start = Clock::now();
    const auto heard = [&] {
      return std::any_of(properties.begin(), properties.end(), [&](const Property* property) {
        return session_.observed().callbacks(property->key) > 0;
      });
    };
    static_cast<void>(session_.WaitFor(heard, kReportLimit));
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    const std::string of = properties.size() == 1 ? " of " + std::string(properties[0]->key) : "";
    checks_.Check(
        service, "first value" + of, heard(), std::to_string(time.count()) + " ms",
        "check that the service reports when a callback is registered, and look for 'avc: "
        "denied { call }' from the service to this process");
  }

  void CheckTemperatures(std::string_view service,
                         const std::vector<TemperatureReport>& temperatures) {
    const auto unreadable = std::count_if(temperatures.begin(), temperatures.end(),
                                          [](const auto& report) { return !report.value; });
    if (unreadable > 0) {
      checks_.Add(service, "readings", Result::kWarning,
                  Counted(static_cast<int>(unreadable), "temperature") + " without a value",
                  "quorvel list names them; look at their drivers");
    }
    const auto unknown =
        std::count_if(temperatures.begin(), temperatures.end(),
                      [](const auto& report) { return !IsWatchableType(report.type); });
    if (unknown > 0) {
      checks_.Add(service, "types", Result::kWarning,
                  Counted(static_cast<int>(unknown), "temperature") +
                      " of a type that the library does not know",
                  "ask for them by name, as quorvel get does; quorvel list names them");
    }
  }

  static constexpr char kLog[] = "look at the library's log: its tags begin with audio_hw";

  Session& session_;
  Checks& checks_;
  Client client_;
};

// Lists the device's parts and its notices. One about the battery level says how the level is made,
// any other one what is missing or wrong.
void CheckDevice(Device& device, const std::vector<DeviceEvent>& notices, Checks& checks) {
  constexpr char kNext[] =
      "nothing, if that is right; otherwise look at the device and its driver "
      "(host/linux_machine/README.md says which files are read)";
  for (const DevicePart& part : device.Parts()) {
    std::string detail = part.kind;
    for (const std::string& text : {part.value, part.item, part.remark}) {
      if (!text.empty()) detail += ", " + text;
    }
    checks.Check("device", part.name, part.remark != kCannotBeRead, detail, kNext,
                 Result::kWarning);
  }
  for (const DeviceEvent& notice : notices) {
    checks.Check(notice.service, "notice", notice.detail.starts_with("battery level:"),
                 notice.detail, kNext, Result::kWarning);
  }
}

}  // namespace

int Doctor(const Options& options, Output& output) {
  std::vector<DeviceEvent> notices;
  Session session(
      options, output,
      {.show_events = false, .show_notices = false, .listener = [&](const Event& event) {
         const auto* const told = std::get_if<DeviceEvent>(&event.what);
         if (told != nullptr && told->kind == DeviceEvent::Kind::kNotice) {
           notices.push_back(*told);
         }
         return true;
       }});
  Checks checks(session);
  checks.Check("process", "binder threads started", HasBinderThreads(), "",
               "call ABinderProcess_startThreadPool() before the first handle is made");
  const std::vector<ServiceState> services = LookUpServices();
  const ServiceState& thermal = ThermalServiceOf(services);
  LibraryChecks library(session, checks);
  if (CheckService(StateOf(kHealthService, services), checks)) library.CheckBattery();
  if (CheckService(StateOf(kSensorService, services), checks)) library.CheckSensors();
  if (CheckService(thermal, checks)) library.CheckThermal(thermal.service);
  session.ShowPending();  // passes the remaining notices to the listener
  CheckDevice(session.device(), notices, checks);
  return checks.Finish();
}

}  // namespace norvik::qel::monitor
