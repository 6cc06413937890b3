// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/device_script.h"

#include <utility>

namespace norvik::qel::monitor {

DeviceScript::DeviceScript(std::vector<Step> steps)
    : steps_(std::move(steps)), next_step_(Clock::now() + steps_[0].pause_before) {}

void DeviceScript::TakeStep() {
  steps_[step_].act();
  step_ = (step_ + 1) % steps_.size();
  next_step_ = Clock::now() + steps_[step_].pause_before;
}

}  // namespace norvik::qel::monitor
