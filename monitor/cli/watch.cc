// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "cli/commands.h"
#include "cli/device_script.h"
#include "cli/names.h"
#include "cli/session.h"
#include "clients/inventory.h"

namespace norvik::qel::monitor {

namespace {

// Clients of a service that does not run are silent.
void ExplainSilence(const std::set<std::string_view>& families, Output& output) {
  const std::vector<ServiceState> services = LookUpServices();
  const auto explain = [&](std::string_view family, const ServiceState& state, const char* how) {
    if (!families.contains(family) || state.is_found) return;
    output.Explain("No " + std::string(state.service) + " service yet: the library looks for it " +
                   how + "; quorvel doctor tells more.");
  };
  explain(kBatteryFamily, StateOf(kHealthService, services), "ten times");
  explain(kSensorFamily, StateOf(kSensorService, services), "once a second");
  explain(kThermalFamily, ThermalServiceOf(services), "ten times, once a second");
}

// Shows the sensors that the device lacks. Returns them as a list if nothing else is watched.
std::string ShowAbsent(const std::vector<Named>& names, const Client& client, Session& session) {
  std::string absent;
  bool all = true;
  for (const auto& [family, key] : names) {
    const SensorProperty* const sensor = SensorPropertyOf(key);
    const bool is_absent = sensor != nullptr && client.Lacks(*sensor);
    all &= is_absent;
    if (!is_absent) continue;
    absent += (absent.empty() ? "" : ", ") + key;
    session.events()->Post(
        ValueChange{.property = sensor, .old_value = {}, .new_value = Absent(), .thread = {}});
  }
  return all ? absent : "";
}

}  // namespace

int Watch(const Options& options, Output& output) {
  std::vector<Named> names = NamesIn(options);
  const std::set<std::string_view> families = FamiliesOf(names);
  std::span<const std::string> shown = options.operands;
  if (shown.size() > 1 && IsThermalWord(shown.front())) shown = shown.subspan(1);
  output.Explain("Watching " + Enumerated(shown, "and") +
                 (options.duration ? "." : "; Ctrl-C ends."));
  if (options.device->tells) output.Explain(kLegend);
  Session session(options, output, {.families = families});
  NoteIgnoredBatteries(session);
  Client client(session.events());
  std::vector<TemperatureReport> reports;
  if (families.contains(kThermalFamily)) {
    auto reported = PlatformTemperatures();
    const Named all = {kThermalFamily, std::string(kThermalFamily)};
    const bool can_wait = !ThermalServiceOf(LookUpServices()).is_found &&
                          std::count(names.begin(), names.end(), all) == 0;
    if (!reported && !can_wait) return session.Fail(FailureOf(kThermalService));
    if (reported) reports = std::move(*reported);
    std::erase_if(reports,
                  [&](const auto& report) { return !CanName(*options.command, KeyOf(report)); });
  }
  ExplainSilence(families, output);
  names = LookedUp(names, *options.command, reports);
  for (const auto& [family, key] : names) {
    if (key != kThermalFamily && client.Join(key)) continue;
    if (family == kThermalFamily) {
      return session.Fail("not present: " + key + KnownTemperatures(reports), kExitUnknown);
    }
    const bool is_sensor = family == kSensorFamily;
    return session.Fail(FailureOf(is_sensor ? kSensorService : kHealthService, kRefusal));
  }
  const std::string absent = ShowAbsent(names, client, session);
  if (!absent.empty()) return session.Fail("not present: " + absent, kExitUnknown);
  DeviceScript(session.device(), families).Run(session, EndOf(options));
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
