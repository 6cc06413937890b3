// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <array>

#include "quorvel/fake/sensor_functions.h"

namespace norvik::qel::fake {

namespace {

std::array<Script, static_cast<size_t>(SensorFunction::kCount)>& Scripts() {
  static auto& scripts = *new std::array<Script, static_cast<size_t>(SensorFunction::kCount)>;
  return scripts;
}

}  // namespace

Script& ScriptOf(SensorFunction function) {
  return Scripts().at(static_cast<size_t>(function));
}

void ResetSensorScripts() {
  for (Script& script : Scripts()) script.Reset();
}

}  // namespace norvik::qel::fake
