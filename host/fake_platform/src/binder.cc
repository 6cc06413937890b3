// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "binder.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "delivery_tracking.h"
#include "quorvel/fake/call_latency.h"

namespace norvik::qel::fake {

namespace {

std::atomic<uint64_t> g_next_id{1};
std::atomic<std::chrono::nanoseconds> g_call_latency{std::chrono::nanoseconds(0)};

bool IsHost(const std::shared_ptr<Process>& process) {
  return process == Process::Host();
}

void CallUnlinked(const Link& link) {
  if (link.unlinked != nullptr) link.unlinked();
}

// Busy-waits: timer slack would exceed the simulated latency.
void WaitForLatency() {
  const std::chrono::nanoseconds latency = g_call_latency.load(std::memory_order_relaxed);
  if (latency <= latency.zero()) return;
  const auto end = std::chrono::steady_clock::now() + latency;
  while (std::chrono::steady_clock::now() < end) {
  }
}

}  // namespace

void SetCallLatency(std::chrono::nanoseconds latency) {
  g_call_latency.store(latency, std::memory_order_relaxed);
}

ndk::SpAIBinder Anchor::Promote() {
  std::lock_guard<std::mutex> lock(lock_);
  if (binder_ == nullptr || !binder_->TryIncStrong()) return {};
  return ndk::SpAIBinder(binder_);
}

void Anchor::Clear() {
  std::lock_guard<std::mutex> lock(lock_);
  binder_ = nullptr;
}

LocalBinder::LocalBinder(const AIBinder_Class* clazz, void* args, std::shared_ptr<Process> process)
    : clazz_(clazz), args_(args), process_(std::move(process)), id_(g_next_id.fetch_add(1)) {}

LocalBinder::~LocalBinder() {
  clazz_->destroy(args_);
}

void LocalBinder::PostOneway(std::shared_ptr<Process> sender,
                             std::function<void(LocalBinder&)> run) {
  if (IsHost(process_)) NoteSent();
  std::lock_guard<std::mutex> lock(lock_);
  oneway_.push_back({.sender = std::move(sender), .run = std::move(run)});
  if (std::exchange(draining_, true)) return;  // the running call posts this one
  PostDrainLocked();
}

void LocalBinder::PostDrainLocked() {
  IncStrong();
  process_->Post(transport(), [self = ndk::SpAIBinder(this), gated = IsHost(process_)]() mutable {
    if (gated) PassDeliveryGate(Delivery::kOneway);
    RunFirstOneway(std::move(self));
  });
}

void LocalBinder::RunFirstOneway(ndk::SpAIBinder self) {
  LocalBinder& object = *self.get()->AsLocal();
  std::shared_ptr<Process> sender;
  {
    std::lock_guard<std::mutex> lock(object.lock_);
    sender = object.oneway_.front().sender;
  }
  if (const std::shared_ptr<PendingDeathNotifications> notifications =
          sender->pending_death_notifications()) {
    notifications->Then([self] {
      const LocalBinder& waiting = *self.get()->AsLocal();
      waiting.process_->Post(waiting.transport(),
                             [self]() mutable { RunFirstOneway(std::move(self)); });
    });
    return;
  }
  OnewayCall call;
  {
    std::lock_guard<std::mutex> lock(object.lock_);
    call = std::move(object.oneway_.front());
    object.oneway_.pop_front();
  }
  call.run(object);
  call.run = nullptr;
  {
    std::lock_guard<std::mutex> lock(object.lock_);
    object.draining_ = !object.oneway_.empty();
    // Posted again instead of looped over, so that calls on other objects get their turn.
    if (object.draining_) object.PostDrainLocked();
  }
  const bool counted = IsHost(object.process_);
  // The reference is released first: a thread that waits for the call to be handled may rely on it.
  self.set(nullptr);
  if (counted) NoteHandled();
}

bool Link::End() {
  State linked = State::kLinked;
  return state.compare_exchange_strong(linked, State::kEnded);
}

std::shared_ptr<Link> RecipientState::TakeNewest(const AIBinder* who, const void* key) {
  std::lock_guard<std::mutex> guard(lock);
  const auto found = std::find_if(links.rbegin(), links.rend(), [&](const auto& link) {
    return link->who == who && link->key == key;
  });
  if (found == links.rend()) return nullptr;
  std::shared_ptr<Link> link = *found;
  links.erase(std::next(found).base());
  return link;
}

void RecipientState::Remove(const std::shared_ptr<Link>& link) {
  std::lock_guard<std::mutex> guard(lock);
  std::erase(links, link);
}

void RecipientState::EndAll() {
  std::vector<std::shared_ptr<Link>> ended;
  {
    std::lock_guard<std::mutex> guard(lock);
    ended.swap(links);
  }
  for (const auto& link : ended) {
    if (link->End()) CallUnlinked(*link);
  }
}

RemoteBinder::RemoteBinder(LocalBinder* target, std::shared_ptr<Process> holder)
    : holder_(std::move(holder)),
      target_process_(target->process()),
      target_id_(target->id()),
      transport_(target->transport()) {
  AIBinder_incStrong(target);
  target_.set(target);
  target_process_->AddInbound(anchor);
  // A dead process holds no references. If the holder dies during this constructor, either this
  // call or Kill() drops the reference.
  if (!holder_->AddOutbound(target_id_, anchor)) HolderDied();
}

RemoteBinder::~RemoteBinder() {
  holder_->RemoveOutbound(target_id_, anchor);
  target_process_->RemoveInbound(anchor);
  for (const auto& link : links_) {
    if (const auto recipient = link->recipient.lock()) recipient->Remove(link);
    if (link->End()) CallUnlinked(*link);
  }
}

bool RemoteBinder::alive() const {
  std::lock_guard<std::mutex> lock(lock_);
  return alive_;
}

ndk::SpAIBinder RemoteBinder::Target() {
  std::lock_guard<std::mutex> lock(lock_);
  if (target_.get() == nullptr) alive_ = false;
  return target_;
}

bool RemoteBinder::CallAndWait(std::function<void(LocalBinder&)> call) {
  ndk::SpAIBinder target = Target();
  if (target.get() == nullptr) return false;
  WaitForLatency();
  auto task = [target = std::move(target), call = std::move(call)]() mutable {
    call(*target.get()->AsLocal());
    call = nullptr;  // its captures are released before the object
  };
  if (target_process_->RunAndWait(transport_, std::move(task))) return true;
  NoteDead();
  return false;
}

bool RemoteBinder::PostOneway(std::function<void(LocalBinder&)> call) {
  std::lock_guard<std::mutex> lock(lock_);
  if (target_.get() == nullptr) {
    alive_ = false;
    return false;
  }
  target_.get()->AsLocal()->PostOneway(holder_, std::move(call));
  return true;
}

void RemoteBinder::NoteDead() {
  std::lock_guard<std::mutex> lock(lock_);
  alive_ = false;
}

bool RemoteBinder::IsOfClass(const AIBinder_Class* clazz) {
  const auto same = [clazz](const AIBinder_Class* known) {
    return strcmp(clazz->descriptor, known->descriptor) == 0;
  };
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (class_ != nullptr) return same(class_);
  }
  const ndk::SpAIBinder target = Target();
  if (target.get() == nullptr) return false;
  const AIBinder_Class* asked = target.get()->AsLocal()->clazz();
  // An object of the host is a callback. On a device the host answers such a question on the thread
  // that waits for the service. So this must not wait for a pool thread of the host, whose pool may
  // not even be started.
  if (!IsHost(target_process_) && !CallAndWait([](LocalBinder&) {})) return false;
  std::lock_guard<std::mutex> lock(lock_);
  class_ = asked;
  return same(asked);
}

binder_status_t RemoteBinder::Link(const std::shared_ptr<RecipientState>& recipient,
                                   std::shared_ptr<fake::Link> link) {
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (!alive_) return STATUS_DEAD_OBJECT;
    // The links of a deleted recipient have ended, but are still in the list.
    std::erase_if(links_, [](const auto& old) { return old->state == fake::Link::State::kEnded; });
    link->who = this;
    links_.push_back(link);
    // The notification may run at once on another thread. It must find the link at the recipient.
    std::lock_guard<std::mutex> guard(recipient->lock);
    recipient->links.push_back(std::move(link));
  }
  // The process is dead, but this reference does not know it yet: the notification follows.
  if (target_process_->dead()) TargetDied();
  return STATUS_OK;
}

binder_status_t RemoteBinder::Unlink(RecipientState& recipient, const void* key) {
  const std::shared_ptr<fake::Link> link = recipient.TakeNewest(this, key);
  if (link == nullptr) return STATUS_NAME_NOT_FOUND;
  bool telling;
  {
    std::lock_guard<std::mutex> lock(lock_);
    telling = std::erase(links_, link) == 0;  // taken by TellRecipients()
  }
  if (link->End()) CallUnlinked(*link);
  return telling ? STATUS_DEAD_OBJECT : STATUS_OK;
}

void RemoteBinder::TargetDied() {
  const std::shared_ptr<PendingDeathNotifications> notifications =
      target_process_->pending_death_notifications();
  {
    std::lock_guard<std::mutex> lock(lock_);
    PostDeathNotificationLocked(notifications);
  }
  DropTarget();
}

void RemoteBinder::HolderDied() {
  NoteDead();
  DropTarget();
}

void RemoteBinder::DropTarget() {
  ndk::SpAIBinder dropped;  // released without the lock
  std::lock_guard<std::mutex> lock(lock_);
  std::swap(dropped, target_);
}

void RemoteBinder::PostDeathNotificationLocked(
    std::shared_ptr<PendingDeathNotifications> notifications) {
  if (links_.empty() || std::exchange(obituary_posted_, true)) return;
  const bool counted = IsHost(holder_);
  if (counted) NoteSent();
  // By anchor: a reference that is dropped before its turn takes its links with it.
  holder_->Post(transport_,
                [anchor = anchor, notifications = std::move(notifications), counted]() mutable {
                  ndk::SpAIBinder self = anchor->Promote();
                  if (self.get() != nullptr) self.get()->AsRemote()->TellRecipients();
                  self.set(nullptr);
                  notifications = nullptr;
                  if (counted) NoteHandled();
                });
}

void RemoteBinder::TellRecipients() {
  std::vector<std::shared_ptr<fake::Link>> links;
  {
    std::lock_guard<std::mutex> lock(lock_);
    alive_ = false;
    links.swap(links_);
  }
  for (const auto& link : links) {
    fake::Link::State linked = fake::Link::State::kLinked;
    if (!link->state.compare_exchange_strong(linked, fake::Link::State::kTelling)) continue;
    if (IsHost(holder_)) PassDeliveryGate(Delivery::kDeathNotification);
    link->died();
    link->state = fake::Link::State::kEnded;
    if (const auto recipient = link->recipient.lock()) recipient->Remove(link);
    CallUnlinked(*link);
  }
}

}  // namespace norvik::qel::fake

AIBinder::AIBinder() : anchor(std::make_shared<norvik::qel::fake::Anchor>(this)) {}

AIBinder::~AIBinder() = default;

bool AIBinder::TryIncStrong() {
  int32_t count = strong_.load(std::memory_order_relaxed);
  while (count > 0) {
    if (strong_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) return true;
  }
  return false;
}

void AIBinder::DecStrong() {
  if (strong_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  anchor->Clear();
  delete this;
}
