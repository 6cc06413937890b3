// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>

#include "common/repeated_thread.h"

namespace norvik::qel::audio {

// A worker whose action is one method of its owner. A method without a result always succeeds. The
// owner outlives the worker.
template <auto kMethod>
class OwnerThread;

template <typename Owner, typename Result, Result (Owner::*kMethod)()>
class OwnerThread<kMethod> : public RepeatedThread {
 public:
  OwnerThread(Owner* owner, std::string_view name, uint32_t pause_ms, uint32_t repeat_count)
      : RepeatedThread(name, pause_ms, repeat_count), owner_(owner) {}

 private:
  bool ClientAction() override {
    if constexpr (std::is_void_v<Result>) {
      (owner_->*kMethod)();
      return true;
    } else {
      return (owner_->*kMethod)();
    }
  }

  Owner* const owner_;
};

}  // namespace norvik::qel::audio
