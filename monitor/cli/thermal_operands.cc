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
    std::string type = text.substr(0, colon);
    std::transform(type.begin(), type.end(), type.begin(), [](char c) {
      return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    const std::string name = text.substr(colon + 1);
    std::string key = type;
    key.append(":").append(name);
    operands_.push_back({.key = key, .type = type, .name = name});
  }
  for (const Operand& operand : operands_) {
    const bool is_known = std::count(kThermalTypes.begin(), kThermalTypes.end(), operand.type) > 0;
    if (!is_known && operand.type != kUnknownThermalType) {
      std::string types;
      for (const std::string_view type : kThermalTypes) types.append(type).append(", ");
      throw UsageError("watch thermal: '" + operand.type + "' is no type of temperature, use " +
                       types + "or " + std::string(kUnknownThermalType));
    }
    properties_.push_back({{.key = operand.key, .name = operand.key, .unit = ""},
                           operand.type.c_str(),
                           operand.name.c_str()});
  }
}

}  // namespace norvik::qel::monitor
