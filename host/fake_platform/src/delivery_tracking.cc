// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "delivery_tracking.h"

#include <array>
#include <condition_variable>
#include <mutex>

#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::fake {

namespace {

struct Account {
  std::mutex lock;
  std::condition_variable changed;
  int under_way QUORVEL_GUARDED_BY(lock) = 0;
  std::array<std::shared_ptr<Gate>, 2> gates QUORVEL_GUARDED_BY(lock);
};

// Never destroyed: binder threads run to the end of the program.
Account& g_account = *new Account;

}  // namespace

void NoteSent() {
  std::lock_guard<std::mutex> lock(g_account.lock);
  ++g_account.under_way;
}

void NoteHandled() {
  std::lock_guard<std::mutex> lock(g_account.lock);
  if (--g_account.under_way == 0) g_account.changed.notify_all();
}

void PassDeliveryGate(Delivery kind) {
  std::shared_ptr<Gate> gate;
  {
    std::lock_guard<std::mutex> lock(g_account.lock);
    gate = g_account.gates.at(static_cast<size_t>(kind));
  }
  if (gate != nullptr) gate->Pass();
}

HoldDeliveries::HoldDeliveries(Delivery kind) : kind_(kind) {
  std::lock_guard<std::mutex> lock(g_account.lock);
  g_account.gates.at(static_cast<size_t>(kind_)) = gate_;
}

void HoldDeliveries::Release() {
  {
    std::lock_guard<std::mutex> lock(g_account.lock);
    std::shared_ptr<Gate>& gate = g_account.gates.at(static_cast<size_t>(kind_));
    if (gate == gate_) gate = nullptr;
  }
  gate_->Open();
}

bool WaitUntilDelivered(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(g_account.lock);
  return g_account.changed.wait_for(
      lock, limit, [&]() QUORVEL_REQUIRES(g_account.lock) { return g_account.under_way == 0; });
}

}  // namespace norvik::qel::fake
