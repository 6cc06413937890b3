// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "hidl_object.h"

#include <hidl/HidlTransportSupport.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "next_outcome.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/fake/thread_annotations.h"
#include "service_registry.h"

namespace norvik::qel::fake {

using ::android::sp;
using ::android::wp;
using ::android::hardware::hidl_death_recipient;

namespace {

// Owned by the binder of a local object.
struct Node {
  sp<HidlBase> object;
  std::shared_ptr<Anchor> binder;  // the binder itself
};

// Maps a local object to its binder. The table keeps nothing alive.
struct NodeTable {
  std::mutex lock;  // nothing is called or released under it
  std::map<const HidlBase*, std::shared_ptr<Anchor>> binders QUORVEL_GUARDED_BY(lock);
};

NodeTable& g_nodes = *new NodeTable;

void DestroyNode(void* args) {
  auto* node = static_cast<Node*>(args);
  {
    std::lock_guard<std::mutex> lock(g_nodes.lock);
    // A new binder may have been made since the count of this one fell to zero.
    const auto found = g_nodes.binders.find(node->object.get());
    if (found != g_nodes.binders.end() && found->second == node->binder) {
      g_nodes.binders.erase(found);
    }
  }
  delete node;
}

constexpr AIBinder_Class kHidlClass = {.descriptor = "android.hidl.base@1.0::IBase",
                                       .object = nullptr,
                                       .destroy = DestroyNode,
                                       .transport = Transport::kHwBinder};

ndk::SpAIBinder NodeOf(const sp<HidlBase>& object) {
  std::lock_guard<std::mutex> lock(g_nodes.lock);
  std::shared_ptr<Anchor>& known = g_nodes.binders[object.get()];
  if (known != nullptr) {
    ndk::SpAIBinder binder = known->Promote();
    if (binder.get() != nullptr) return binder;
  }
  auto* node = new Node{.object = object, .binder = nullptr};
  ndk::SpAIBinder binder(AIBinder_new(&kHidlClass, node));
  node->binder = binder.get()->anchor;
  known = node->binder;
  return binder;
}

std::atomic<bool> g_present{true};  // the HIDL service manager

// The name in the manifest and in the registry.
std::string InstanceOf(const std::string& descriptor, const std::string& name) {
  return descriptor + "/" + name;
}

// Identifies a recipient as long as a weak reference to it is held.
const void* IdentityOf(const hidl_death_recipient& recipient) {
  ::android::RefBase::weakref_type* identity = recipient.createWeak();
  ::android::RefBase::DropWeak(identity);
  return identity;
}

}  // namespace

ndk::SpAIBinder BinderOf(const sp<HidlBase>& object) {
  if (object == nullptr) return {};
  if (!object->isRemote()) return NodeOf(object);
  return dynamic_cast<HidlProxy&>(*object).binder();
}

HidlBase& HidlObject(const LocalBinder& binder) {
  return *static_cast<const Node*>(binder.args())->object;
}

void StartHidlThreads() {
  Process::Current()->pool(Transport::kHwBinder).Start();
}

ndk::SpAIBinder LookUpHidl(BinderFunction function, const std::string& descriptor,
                           const std::string& name, bool get_stub) {
  const std::string instance = InstanceOf(descriptor, name);
  ServiceRegistry& registry = ServiceRegistry::Hidl();
  if (!NextOutcome(function).works() || !g_present || get_stub || !registry.IsDeclared(instance))
    return {};
  return function == BinderFunction::kGetHidlService ? registry.Wait(instance)
                                                     : registry.Check(instance);
}

::android::status_t AddHidl(const ::android::sp<HidlBase>& service, const std::string& name) {
  if (!g_present) return ::android::UNKNOWN_ERROR;
  const std::shared_ptr<Process> process = Process::Current();
  if (process->dead()) return ::android::DEAD_OBJECT;
  const ndk::SpAIBinder binder = BinderOf(service);
  const auto offered = service->interfaceChain([&](const auto& descriptors) {
    for (const auto& descriptor : descriptors) {
      if (descriptor == HidlBase::descriptor) continue;
      ServiceRegistry::Hidl().Add(InstanceOf(descriptor.c_str(), name), binder.get());
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

NoHidlServiceManager::NoHidlServiceManager() {
  g_present = false;
}

NoHidlServiceManager::~NoHidlServiceManager() {
  g_present = true;
}

HidlProxy::~HidlProxy() {
  links_->EndAll();
}

bool HidlProxy::LinkRecipient(const sp<hidl_death_recipient>& recipient, uint64_t cookie,
                              const wp<HidlBase>& who) {
  if (!NextOutcome(BinderFunction::kHidlLinkToDeath).works()) return false;
  StartHidlThreads();
  auto link = std::make_shared<Link>();
  link->died = [weak = wp<hidl_death_recipient>(recipient), cookie, who] {
    const sp<hidl_death_recipient> told = weak.promote();
    if (told != nullptr) told->serviceDied(cookie, who);
  };
  // The weak reference in `died` keeps this address from being reused.
  link->key = recipient != nullptr ? IdentityOf(*recipient) : nullptr;
  link->recipient = links_;
  return binder_.get()->AsRemote()->Link(links_, std::move(link)) == STATUS_OK;
}

bool HidlProxy::UnlinkRecipient(const sp<hidl_death_recipient>& recipient) {
  const bool refused = !NextOutcome(BinderFunction::kHidlUnlinkToDeath).works();
  if (recipient == nullptr) return false;
  const binder_status_t status = binder_.get()->AsRemote()->Unlink(*links_, IdentityOf(*recipient));
  return status == STATUS_OK && !refused;
}

}  // namespace norvik::qel::fake

namespace android::hardware {

bool interfacesEqual(const sp<::android::hidl::base::V1_0::IBase>& left,
                     const sp<::android::hidl::base::V1_0::IBase>& right) {
  if (left == nullptr || right == nullptr || !left->isRemote() || !right->isRemote()) {
    return left == right;
  }
  return norvik::qel::fake::BinderOf(left) == norvik::qel::fake::BinderOf(right);
}

}  // namespace android::hardware
