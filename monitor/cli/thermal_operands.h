// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The temperatures to watch, as they stand on the command line.
#pragma once

#include <string>
#include <vector>

#include "clients/thermal_properties.h"

namespace norvik::qel::monitor {

// Each is a TYPE:NAME, the type in any case. Throws UsageError for one that is not, or whose type
// is none of the thermal service's.
//
// Threads: the main thread.
class ThermalOperands {
 public:
  explicit ThermalOperands(const std::vector<std::string>& texts);
  ThermalOperands(const ThermalOperands&) = delete;
  ThermalOperands& operator=(const ThermalOperands&) = delete;

  // They live as long as this object.
  const std::vector<ThermalProperty>& properties() const { return properties_; }

 private:
  struct Operand {
    std::string key;
    std::string type;
    std::string name;
  };

  std::vector<Operand> operands_;
  std::vector<ThermalProperty> properties_;  // they point into the operands
};

}  // namespace norvik::qel::monitor
