// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <iterator>

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
  for (const ServiceState* const state :
       {&StateOf(kHealthService, services), &StateOf(kSensorService, services),
        &ThermalServiceOf(services)}) {
    if (state->is_found || !families.contains(FamilyOfService(state->service))) continue;
    output.Explain("No " + std::string(state->service) +
                   " service yet: the library keeps looking for it; quorvel doctor tells more.");
  }
}

}  // namespace

int Watch(const Options& options, Output& output) {
  std::vector<std::string> keys = KeysIn(options);
  const std::set<std::string_view> families = FamiliesOf(keys);
  output.Explain("Watching " + Enumerated(NamesIn(options), "and") +
                 (options.duration ? "." : "; Ctrl-C ends."));
  if (options.device->tells) output.Explain(kLegend);
  Session session(options, output, {.families = families});
  NoteIgnoredBatteries(session);
  Client client(session.events());
  std::vector<TemperatureReport> reports, watchable;
  if (families.contains(kThermalFamily)) {
    const auto reported = PlatformTemperatures();
    const bool can_wait = !ThermalServiceOf(LookUpServices()).is_found &&
                          std::count(keys.begin(), keys.end(), kThermalFamily) == 0;
    if (!reported && !can_wait) return session.Fail(FailureOf(kThermalService));
    if (reported) reports = *reported;
    std::copy_if(reports.begin(), reports.end(), std::back_inserter(watchable),
                 [&](const auto& it) { return CanName(*options.command, KeyOf(it)); });
  }
  ExplainSilence(families, output);
  std::string absent;
  bool all_are_absent = true;
  keys = LookedUp(keys, watchable);
  for (const std::string& key : keys) output.ExpectName(key);
  for (const std::string& key : keys) {
    if (key == kThermalFamily || !client.Join(key)) {
      const std::string_view service = ServiceOf(key);
      if (service != kThermalService) return session.Fail(FailureOf(service, kRefusal));
      return session.Fail("not present: " + key + KnownTemperatures(reports), kExitUnknown);
    }
    const SensorProperty* const sensor = SensorPropertyOf(key);
    const bool is_absent = sensor != nullptr && client.Lacks(*sensor);
    all_are_absent &= is_absent;
    if (!is_absent) continue;
    absent += (absent.empty() ? "" : ", ") + key;
    session.events()->Post(
        ValueChange{.property = sensor, .old_value = {}, .new_value = Absent(), .thread = {}});
  }
  if (all_are_absent) return session.Fail("not present: " + absent, kExitUnknown);
  DeviceScript(session.device(), families).Run(session, EndOf(options));
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
