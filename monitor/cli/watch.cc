// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "cli/commands.h"
#include "cli/device_script.h"
#include "cli/session.h"
#include "clients/inventory.h"

namespace norvik::qel::monitor {

namespace {

// The key of a TYPE:NAME, whose type may be in lower case. Throws UsageError.
std::string TemperatureKeyOf(const std::string& operand) {
  auto parts = SplitTemperatureKey(operand);
  if (!parts) {
    throw UsageError("watch thermal: '" + operand + "' is no TYPE:NAME, use one such as SKIN:skin");
  }
  for (char& c : parts->type) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  if (IsWatchableType(parts->type)) return parts->type + ":" + parts->name;
  std::string types;
  for (const std::string_view type : kThermalTypes) types.append(type).append(", ");
  throw UsageError("watch thermal: '" + parts->type + "' is no type of temperature, use " + types +
                   "or " + std::string(kUnknownThermalType));
}

using Clock = Session::Clock;

// Prints a hint if no callback comes within 1 s: a running service answers at once.
void ExplainSilence(Session& session, Clock::time_point end) {
  const auto heard = [&] { return session.observed().callbacks() > 0; };
  const auto wait = std::min<Clock::duration>(std::chrono::seconds(1), end - Clock::now());
  if (session.WaitFor(heard, wait) != Session::Wake::kTime) return;
  session.output().Explain(
      "No thermal service yet: the library looks for it ten times, once a second.");
}

}  // namespace

// Watches a family, or the temperatures that the operands name.
int Watch(const Options& options, Output& output) {
  const std::string family(options.command->family);
  const bool is_thermal = family == kThermalFamily;
  std::vector<std::string> subjects;  // checked before anything is printed or started
  for (const std::string& operand : options.operands) {
    subjects.push_back(TemperatureKeyOf(operand));
    output.ExpectName(subjects.back());
  }
  if (!is_thermal) subjects = {family};
  output.Explain("Watching the " + (is_thermal ? "throttling" : family) +
                 (options.duration ? "." : "; Ctrl-C ends."));
  if (options.device->tells) output.Explain(kLegend);
  Session session(options, output, {});
  Client client(session.events());
  for (const std::string& subject : subjects) {
    if (client.Join(subject)) continue;
    if (!is_thermal) return session.Fail(kRefusal);
    return session.Fail("the thermal service reports no temperature " + subject +
                            KnownTemperatures(/*with_type=*/true),
                        kExitUnknown);
  }
  for (const SensorProperty* sensor : kSensorProperties) {
    if (client.Lacks(*sensor)) output.ShowReading(*sensor, Absent());
  }
  const Clock::time_point end = EndOf(options);
  if (is_thermal) ExplainSilence(session, end);
  DeviceScript(session.device(), options.command->service).Run(session, end);
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
