// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "delivery_tracking.h"

#include <array>
#include <condition_variable>
#include <mutex>

#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::fake {

namespace {

// Never destroyed: binder threads run to the end of the program.
struct Account {
  std::mutex lock;
  std::condition_variable changed;
  int under_way QUORVEL_GUARDED_BY(lock) = 0;
  std::array<std::shared_ptr<Gate>, 2> gates QUORVEL_GUARDED_BY(lock);
};

Account& TheAccount() {
  static Account& account = *new Account;
  return account;
}

}  // namespace

void NoteSent() {
  Account& account = TheAccount();
  std::lock_guard<std::mutex> lock(account.lock);
  ++account.under_way;
}

void NoteHandled() {
  Account& account = TheAccount();
  std::lock_guard<std::mutex> lock(account.lock);
  if (--account.under_way == 0) account.changed.notify_all();
}

void PassDeliveryGate(Delivery kind) {
  std::shared_ptr<Gate> gate;
  {
    Account& account = TheAccount();
    std::lock_guard<std::mutex> lock(account.lock);
    gate = account.gates.at(static_cast<size_t>(kind));
  }
  if (gate != nullptr) gate->Pass();
}

HoldDeliveries::HoldDeliveries(Delivery kind) : kind_(kind) {
  Account& account = TheAccount();
  std::lock_guard<std::mutex> lock(account.lock);
  account.gates.at(static_cast<size_t>(kind_)) = gate_;
}

void HoldDeliveries::Release() {
  {
    Account& account = TheAccount();
    std::lock_guard<std::mutex> lock(account.lock);
    std::shared_ptr<Gate>& gate = account.gates.at(static_cast<size_t>(kind_));
    if (gate == gate_) gate = nullptr;
  }
  gate_->Open();
}

bool WaitUntilDelivered(std::chrono::milliseconds limit) {
  Account& account = TheAccount();
  std::unique_lock<std::mutex> lock(account.lock);
  return account.changed.wait_for(
      lock, limit, [&]() QUORVEL_REQUIRES(account.lock) { return account.under_way == 0; });
}

}  // namespace norvik::qel::fake
