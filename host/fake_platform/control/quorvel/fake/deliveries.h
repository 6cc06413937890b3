// Control of what arrives in this process: one-way calls and death notices.
#pragma once

#include <chrono>
#include <memory>

#include "quorvel/fake/gate.h"
#include "quorvel/fake/script.h"

namespace norvik::qel::fake {

enum class Delivery {
  kOneway,             // a one-way call on an object of this process
  kDeathNotification,  // a recipient that is about to be told; unlinking comes too late for it
};

// While it lives, every delivery of its kind stops on its binder thread, just before it runs.
class HoldDeliveries {
 public:
  explicit HoldDeliveries(Delivery kind);
  ~HoldDeliveries() { Release(); }
  HoldDeliveries(const HoldDeliveries&) = delete;
  HoldDeliveries& operator=(const HoldDeliveries&) = delete;

  // Waits until `count` deliveries have been stopped; false after `limit`.
  [[nodiscard]] bool WaitForHeld(int count = 1,
                                 std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    return gate_->WaitForArrivals(count, limit);
  }
  // Lets all of them go, and the later ones pass.
  void Release();

 private:
  const Delivery kind_;
  const std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

// Waits until every one-way call and death notice sent to this process so far, and whatever
// they have caused meanwhile, has been handled; false after `limit`.
[[nodiscard]] bool WaitUntilDelivered(std::chrono::milliseconds limit = std::chrono::seconds(10));

// Scripts of the links: an outcome other than STATUS_OK is the result, and nothing is linked; a
// scripted unlink ends the link all the same.
Script& LinkToDeathScript();
Script& UnlinkToDeathScript();
// The same of HIDL proxies, whose results are true and false.
Script& HidlLinkToDeathScript();
Script& HidlUnlinkToDeathScript();

}  // namespace norvik::qel::fake
