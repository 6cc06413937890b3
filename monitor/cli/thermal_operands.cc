// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/thermal_operands.h"

#include <algorithm>

#include "cli/options.h"

namespace norvik::qel::monitor {

ThermalOperands::ThermalOperands(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) {
    // The device maker's name may hold further colons.
    const size_t colon = text.find(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) {
      throw UsageError("watch thermal: '" + text + "' is no TYPE:NAME, use one such as SKIN:skin");
    }
    operands_.push_back(
        {.text = text, .type = text.substr(0, colon), .name = text.substr(colon + 1)});
  }
  for (const Operand& operand : operands_) {
    if (std::find(kThermalTypes.begin(), kThermalTypes.end(), operand.type) ==
        kThermalTypes.end()) {
      throw UsageError("watch thermal: '" + operand.type +
                       "' is no type of temperature, use one such as SKIN, CPU or BCL_CURRENT");
    }
    properties_.push_back({{.key = operand.text, .name = operand.text, .unit = ""},
                           operand.type.c_str(),
                           operand.name.c_str()});
  }
}

}  // namespace norvik::qel::monitor
