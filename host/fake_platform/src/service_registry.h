// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The registry of services and the manifest, for AIDL and HIDL each.
#pragma once

#include <android/binder_auto_utils.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "process.h"
#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::fake {

// Locks: lock_ guards the tables; no reference is released under it.
class ServiceRegistry {
 public:
  static ServiceRegistry& Get();   // of AIDL services
  static ServiceRegistry& Hidl();  // of HIDL services; instances are "package@1.0::IFoo/name"

  void Add(const std::string& instance, AIBinder* binder);
  // The calling process's reference to a service. Empty if the service is not running.
  [[nodiscard]] ndk::SpAIBinder Check(const std::string& instance);
  [[nodiscard]] ndk::SpAIBinder Wait(const std::string& instance);
  // Removes the names of a process that has died.
  void Forget(const Process& process);

  void SetDeclared(const std::string& instance, bool declared);
  bool IsDeclared(const std::string& instance) const;
  std::set<std::string> Declared() const;

  std::atomic<int64_t> get_service_pause_ms{1000};
  std::atomic<int> get_service_attempts{5};

 private:
  mutable std::mutex lock_;
  std::condition_variable added_;
  std::map<std::string, ndk::SpAIBinder> services_ QUORVEL_GUARDED_BY(lock_);
  std::set<std::string> declared_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::fake
