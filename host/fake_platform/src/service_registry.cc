// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "service_registry.h"

#include <android/binder_manager.h>
#include <android/log.h>

#include <chrono>
#include <thread>
#include <vector>

#include "binder.h"
#include "next_outcome.h"
#include "quorvel/fake/service_manager.h"

namespace norvik::qel::fake {

ServiceRegistry& ServiceRegistry::Get() {
  // Leaked on purpose: binder threads may outlive main().
  static ServiceRegistry& registry = *new ServiceRegistry;
  return registry;
}

ServiceRegistry& ServiceRegistry::Hidl() {
  static ServiceRegistry& registry = *new ServiceRegistry;
  return registry;
}

void ServiceRegistry::Add(const std::string& instance, AIBinder* binder) {
  ndk::SpAIBinder service(binder);
  AIBinder_incStrong(binder);
  std::lock_guard<std::mutex> lock(lock_);
  std::swap(services_[instance], service);  // the old service is released after the lock
  added_.notify_all();
}

ndk::SpAIBinder ServiceRegistry::Check(const std::string& instance) {
  ndk::SpAIBinder service;
  {
    std::lock_guard<std::mutex> lock(lock_);
    const auto found = services_.find(instance);
    if (found == services_.end()) return {};
    service = found->second;
  }
  return Process::Current()->Reach(service.get());
}

ndk::SpAIBinder ServiceRegistry::Wait(const std::string& instance) {
  while (true) {
    {
      std::unique_lock<std::mutex> lock(lock_);
      added_.wait(lock, [&]() QUORVEL_REQUIRES(lock_) { return services_.contains(instance); });
    }
    ndk::SpAIBinder service = Check(instance);
    if (service.get() != nullptr) return service;
  }
}

void ServiceRegistry::Forget(const Process& process) {
  std::vector<ndk::SpAIBinder> gone;  // released after the lock
  std::lock_guard<std::mutex> lock(lock_);
  for (auto service = services_.begin(); service != services_.end();) {
    const LocalBinder* local = service->second.get()->AsLocal();
    if (local != nullptr && local->process().get() == &process) {
      gone.push_back(std::move(service->second));
      service = services_.erase(service);
    } else {
      ++service;
    }
  }
}

void ServiceRegistry::SetDeclared(const std::string& instance, bool declared) {
  std::lock_guard<std::mutex> lock(lock_);
  if (declared) {
    declared_.insert(instance);
  } else {
    declared_.erase(instance);
  }
}

bool ServiceRegistry::IsDeclared(const std::string& instance) const {
  std::lock_guard<std::mutex> lock(lock_);
  return declared_.contains(instance);
}

std::set<std::string> ServiceRegistry::Declared() const {
  std::lock_guard<std::mutex> lock(lock_);
  return declared_;
}

void Declare(const std::string& instance) {
  ServiceRegistry::Get().SetDeclared(instance, true);
}

void Undeclare(const std::string& instance) {
  ServiceRegistry::Get().SetDeclared(instance, false);
}

void SetGetServiceWait(std::chrono::milliseconds pause, int attempts) {
  ServiceRegistry::Get().get_service_pause_ms = pause.count();
  ServiceRegistry::Get().get_service_attempts = attempts;
}

}  // namespace norvik::qel::fake

using norvik::qel::fake::BinderFunction;
using norvik::qel::fake::NextOutcome;
using norvik::qel::fake::ServiceRegistry;

namespace {

// The platform's log lines while a look-up polls.
constexpr char kLookUpTag[] = "ServiceManagerCppClient";
constexpr char kDriver[] = "/dev/binder";

AIBinder* Release(const ndk::SpAIBinder& binder) {
  AIBinder_incStrong(binder.get());
  return binder.get();
}

}  // namespace

extern "C" {

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
  if (binder == nullptr || instance == nullptr) return EX_ILLEGAL_ARGUMENT;
  if (binder->AsLocal() != nullptr && binder->AsLocal()->process()->dead()) return EX_ILLEGAL_STATE;
  ServiceRegistry::Get().Add(instance, binder);
  return EX_NONE;
}

AIBinder* AServiceManager_checkService(const char* instance) {
  if (instance == nullptr) return nullptr;
  if (!NextOutcome(BinderFunction::kCheckService).works()) return nullptr;
  return Release(ServiceRegistry::Get().Check(instance));
}

AIBinder* AServiceManager_getService(const char* instance) {
  if (instance == nullptr) return nullptr;
  ServiceRegistry& registry = ServiceRegistry::Get();
  const bool works = NextOutcome(BinderFunction::kGetService).works();
  ndk::SpAIBinder service;
  if (works) service = registry.Check(instance);
  if (service.get() != nullptr) return Release(service);

  using std::chrono::steady_clock;
  const auto begin = steady_clock::now();
  __android_log_print(ANDROID_LOG_INFO, kLookUpTag, "Waiting for service '%s' on '%s'...", instance,
                      kDriver);
  for (int attempt = 0; attempt < registry.get_service_attempts; ++attempt) {
    std::this_thread::sleep_for(std::chrono::milliseconds(registry.get_service_pause_ms));
    if (works) service = registry.Check(instance);
    if (service.get() == nullptr) continue;
    const auto waited =
        std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now() - begin);
    __android_log_print(ANDROID_LOG_INFO, kLookUpTag,
                        "Waiting for service '%s' on '%s' successful after waiting %lldms",
                        instance, kDriver, static_cast<long long>(waited.count()));
    return Release(service);
  }
  __android_log_print(ANDROID_LOG_WARN, kLookUpTag, "Service %s didn't start. Returning NULL",
                      instance);
  return nullptr;
}

AIBinder* AServiceManager_waitForService(const char* instance) {
  return instance != nullptr ? Release(ServiceRegistry::Get().Wait(instance)) : nullptr;
}

bool AServiceManager_isDeclared(const char* instance) {
  return instance != nullptr && NextOutcome(BinderFunction::kIsDeclared).works() &&
         ServiceRegistry::Get().IsDeclared(instance);
}

void AServiceManager_forEachDeclaredInstance(const char* interface, void* context,
                                             void (*callback)(const char* instance,
                                                              void* context)) {
  const std::string prefix = std::string(interface) + "/";
  for (const std::string& name : ServiceRegistry::Get().Declared()) {
    if (name.starts_with(prefix)) callback(name.c_str() + prefix.size(), context);
  }
}

}  // extern "C"
