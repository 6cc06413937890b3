// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "hidl_lookup.h"

#include <atomic>

#include "next_outcome.h"
#include "quorvel/fake/hidl_service_manager.h"
#include "service_registry.h"

namespace norvik::qel::fake {

namespace {

std::atomic<bool> g_present{true};

// The name in the manifest and in the registry.
std::string Instance(const std::string& descriptor, const std::string& name) {
  return descriptor + "/" + name;
}

bool MayBeThere(const std::string& instance, bool get_stub) {
  return g_present && !get_stub && ServiceRegistry::Hidl().IsDeclared(instance);
}

}  // namespace

ndk::SpAIBinder TryGetHidl(const std::string& descriptor, const std::string& name, bool get_stub) {
  const std::string instance = Instance(descriptor, name);
  if (!NextOutcome(BinderFunction::kTryGetHidlService).works() || !MayBeThere(instance, get_stub))
    return {};
  return ServiceRegistry::Hidl().Check(instance);
}

ndk::SpAIBinder GetHidl(const std::string& descriptor, const std::string& name, bool get_stub) {
  const std::string instance = Instance(descriptor, name);
  if (!NextOutcome(BinderFunction::kGetHidlService).works() || !MayBeThere(instance, get_stub))
    return {};
  return ServiceRegistry::Hidl().Wait(instance);
}

::android::status_t AddHidl(const ::android::sp<HidlBase>& service, const std::string& name) {
  if (!g_present) return ::android::UNKNOWN_ERROR;
  const std::shared_ptr<Process> process = Process::Current();
  if (process->dead()) return ::android::DEAD_OBJECT;
  const ndk::SpAIBinder binder = BinderOf(service);
  const auto offered = service->interfaceChain([&](const auto& descriptors) {
    for (const auto& descriptor : descriptors) {
      if (descriptor == HidlBase::descriptor) continue;
      ServiceRegistry::Hidl().Add(Instance(descriptor.c_str(), name), binder.get());
    }
  });
  if (!offered.isOk()) return ::android::UNKNOWN_ERROR;
  if (!process->dead()) return ::android::OK;
  ServiceRegistry::Hidl().Forget(*process);  // killed while it was being added
  return ::android::DEAD_OBJECT;
}

void DeclareHidl(const std::string& instance) {
  ServiceRegistry::Hidl().SetDeclared(instance, true);
}

void UndeclareHidl(const std::string& instance) {
  ServiceRegistry::Hidl().SetDeclared(instance, false);
}

void SetHidlServiceManagerPresent(bool present) {
  g_present = present;
}

}  // namespace norvik::qel::fake
