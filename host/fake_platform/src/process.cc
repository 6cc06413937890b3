// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "process.h"

#include <android/binder_manager.h>

#include <utility>
#include <vector>

#include "binder.h"
#include "hidl_object.h"
#include "quorvel/fake/service_process.h"
#include "service_registry.h"

namespace norvik::qel::fake {

namespace {
thread_local std::shared_ptr<Process> t_current;
}  // namespace

PendingDeathNotifications::~PendingDeathNotifications() {
  for (const auto& next : waiting_) next();
}

void PendingDeathNotifications::Then(std::function<void()> next) {
  std::lock_guard<std::mutex> lock(lock_);
  waiting_.push_back(std::move(next));
}

Process::Process(const std::string& name)
    : binder_pool_(std::make_shared<ThreadPool>("binder:" + name)),
      hwbinder_pool_(std::make_shared<ThreadPool>("hwbinder:" + name)) {}

const std::shared_ptr<Process>& Process::Host() {
  // Leaked on purpose: its threads run until the program ends.
  static const auto& host = *new std::shared_ptr<Process>(std::make_shared<Process>("host"));
  return host;
}

std::shared_ptr<Process> Process::Current() {
  return t_current != nullptr ? t_current : Host();
}

Process::Scope::Scope(std::shared_ptr<Process> process)
    : before_(std::exchange(t_current, std::move(process))) {}

Process::Scope::~Scope() {
  t_current = std::move(before_);
}

ndk::SpAIBinder Process::Reach(AIBinder* binder) {
  ndk::SpAIBinder target;
  if (LocalBinder* local = binder->AsLocal()) {
    AIBinder_incStrong(local);
    target.set(local);
  } else {
    target = binder->AsRemote()->Target();
  }
  if (target.get() == nullptr) return {};
  LocalBinder* object = target.get()->AsLocal();
  if (object->process().get() == this) return target;

  std::lock_guard<std::mutex> one_at_a_time(reach_lock_);
  std::shared_ptr<Anchor> known;
  {
    std::lock_guard<std::mutex> lock(lock_);
    const auto found = outbound_.find(object->id());
    if (found != outbound_.end()) known = found->second;
  }
  if (known != nullptr) {
    ndk::SpAIBinder reference = known->Promote();
    if (reference.get() != nullptr) return reference;
  }
  return ndk::SpAIBinder(new RemoteBinder(object, shared_from_this()));
}

void Process::Post(Transport transport, std::function<void()> task) {
  pool(transport).Post([self = shared_from_this(), task = std::move(task)]() mutable {
    const Scope scope(self);
    task();
    task = nullptr;  // its captures are released as this process, too
  });
}

bool Process::RunAndWait(Transport transport, std::function<void()> task) {
  auto call = std::make_shared<PendingCall>();
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (dead_) return false;
    calls_.insert(call);
  }
  Post(transport, [call, task = std::move(task)]() mutable {
    task();
    task = nullptr;  // the caller may rely on the captures being released when it returns
    std::lock_guard<std::mutex> lock(call->lock);
    call->done = true;
    call->changed.notify_all();
  });
  {
    std::unique_lock<std::mutex> lock(call->lock);
    AssertHeld(call->lock);
    call->changed.wait(lock,
                       [&]() QUORVEL_REQUIRES(call->lock) { return call->done || call->dead; });
    if (call->dead) return false;
  }
  std::lock_guard<std::mutex> lock(lock_);
  calls_.erase(call);
  return true;
}

bool Process::dead() const {
  std::lock_guard<std::mutex> lock(lock_);
  return dead_;
}

std::shared_ptr<PendingDeathNotifications> Process::pending_death_notifications() const {
  std::lock_guard<std::mutex> lock(lock_);
  return pending_death_notifications_.lock();
}

void Process::Kill() {
  const auto notifications = std::make_shared<PendingDeathNotifications>();  // released last
  std::set<std::shared_ptr<PendingCall>> calls;
  std::vector<std::shared_ptr<Anchor>> outbound;
  std::vector<std::shared_ptr<Anchor>> inbound;
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (dead_) return;
    dead_ = true;
    pending_death_notifications_ = notifications;
    calls.swap(calls_);
    for (const auto& [id, reference] : outbound_) outbound.push_back(reference);
    inbound.assign(inbound_.begin(), inbound_.end());
  }
  ServiceRegistry::Get().Forget(*this);
  ServiceRegistry::Hidl().Forget(*this);
  for (const auto& call : calls) {
    std::lock_guard<std::mutex> lock(call->lock);
    call->dead = !call->done;
    call->changed.notify_all();
  }
  for (const auto& anchor : inbound) {
    const ndk::SpAIBinder reference = anchor->Promote();
    if (reference.get() != nullptr) reference.get()->AsRemote()->TargetDied();
  }
  for (const auto& anchor : outbound) {
    const ndk::SpAIBinder reference = anchor->Promote();
    if (reference.get() != nullptr) reference.get()->AsRemote()->HolderDied();
  }
  binder_pool_->Close();
  hwbinder_pool_->Close();
}

bool Process::AddOutbound(uint64_t target_id, std::shared_ptr<Anchor> reference) {
  std::lock_guard<std::mutex> lock(lock_);
  if (dead_) return false;
  outbound_[target_id] = std::move(reference);
  return true;
}

void Process::RemoveOutbound(uint64_t target_id, const std::shared_ptr<Anchor>& reference) {
  std::lock_guard<std::mutex> lock(lock_);
  const auto found = outbound_.find(target_id);
  if (found != outbound_.end() && found->second == reference) outbound_.erase(found);
}

void Process::AddInbound(std::shared_ptr<Anchor> reference) {
  std::lock_guard<std::mutex> lock(lock_);
  inbound_.insert(std::move(reference));
}

void Process::RemoveInbound(const std::shared_ptr<Anchor>& reference) {
  std::lock_guard<std::mutex> lock(lock_);
  inbound_.erase(reference);
}

ServiceProcess::ServiceProcess(const std::string& name)
    : process_(std::make_shared<Process>(name)) {
  process_->pool(Transport::kBinder).Start();
  process_->pool(Transport::kHwBinder).Start();
}

ServiceProcess::~ServiceProcess() {
  Kill();
}

bool ServiceProcess::AddService(const std::shared_ptr<ndk::ICInterface>& service,
                                const std::string& instance) {
  const Process::Scope scope(process_);
  if (AServiceManager_addService(service->asBinder().get(), instance.c_str()) != EX_NONE) {
    return false;
  }
  if (!process_->dead()) return true;
  ServiceRegistry::Get().Forget(*process_);  // killed while it was being added
  return false;
}

bool ServiceProcess::AddHidlService(
    const ::android::sp<::android::hidl::base::V1_0::IBase>& service, const std::string& name) {
  const Process::Scope scope(process_);
  return AddHidl(service, name) == ::android::OK;
}

void ServiceProcess::Kill() {
  process_->Kill();
}

bool ServiceProcess::alive() const {
  return !process_->dead();
}

}  // namespace norvik::qel::fake
