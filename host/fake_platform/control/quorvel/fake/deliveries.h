// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Control of deliveries to the host process: one-way calls and death notifications.
#pragma once

#include <chrono>
#include <memory>

#include "quorvel/fake/gate.h"

namespace norvik::qel::fake {

enum class Delivery {
  kOneway,             // a one-way call on an object of the host process
  kDeathNotification,  // a recipient about to be called; it is too late to unlink it
};

// While it lives, every delivery of its kind stops on its binder thread just before it runs.
class HoldDeliveries {
 public:
  explicit HoldDeliveries(Delivery kind);
  ~HoldDeliveries() { Release(); }
  HoldDeliveries(const HoldDeliveries&) = delete;
  HoldDeliveries& operator=(const HoldDeliveries&) = delete;

  // Waits until `count` deliveries have stopped; false after `limit`.
  [[nodiscard]] bool WaitForHeld(int count = 1,
                                 std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    return gate_->WaitForArrivals(count, limit);
  }
  // Releases all stopped deliveries; later ones pass.
  void Release();

 private:
  const Delivery kind_;
  const std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

// Waits until all one-way calls and death notifications sent to the host process have been handled,
// including those that they caused; false after `limit`.
[[nodiscard]] bool WaitUntilDelivered(std::chrono::milliseconds limit = std::chrono::seconds(10));

}  // namespace norvik::qel::fake
