// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The C functions of binder objects and death recipients.
#include <android/binder_ibinder.h>
#include <android/binder_process.h>
#include <android/log.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "binder.h"
#include "next_outcome.h"

using norvik::qel::fake::Anchor;
using norvik::qel::fake::BinderFunction;
using norvik::qel::fake::Link;
using norvik::qel::fake::LocalBinder;
using norvik::qel::fake::NextOutcome;
using norvik::qel::fake::Process;
using norvik::qel::fake::RecipientState;
using norvik::qel::fake::RemoteBinder;
using norvik::qel::fake::Transport;

struct AIBinder_Weak {
  std::shared_ptr<Anchor> anchor;
};

struct AIBinder_DeathRecipient {
  AIBinder_DeathRecipient_onBinderDied died;
  AIBinder_DeathRecipient_onBinderUnlinked unlinked = nullptr;
  std::shared_ptr<RecipientState> state = std::make_shared<RecipientState>();
};

extern "C" {

void AIBinder_incStrong(AIBinder* binder) {
  if (binder != nullptr) binder->IncStrong();
}

void AIBinder_decStrong(AIBinder* binder) {
  if (binder == nullptr) {
    __android_log_print(ANDROID_LOG_ERROR, "libbinder_ndk", "%s: null binder", __func__);
    return;
  }
  binder->DecStrong();
}

int32_t AIBinder_debugGetRefCount(AIBinder* binder) {
  return binder != nullptr ? binder->strong() : -1;
}

bool AIBinder_isRemote(const AIBinder* binder) {
  return binder != nullptr && const_cast<AIBinder*>(binder)->AsRemote() != nullptr;
}

bool AIBinder_isAlive(const AIBinder* binder) {
  if (binder == nullptr) return false;
  const RemoteBinder* remote = const_cast<AIBinder*>(binder)->AsRemote();
  return remote == nullptr || remote->alive();
}

binder_status_t AIBinder_ping(AIBinder* binder) {
  if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
  RemoteBinder* remote = binder->AsRemote();
  if (remote == nullptr) return STATUS_OK;
  return remote->CallAndWait([](LocalBinder&) {}) ? STATUS_OK : STATUS_DEAD_OBJECT;
}

binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
  if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
  if (LocalBinder* local = binder->AsLocal()) return local->object()->dump(fd, args, numArgs);
  // The service gets its own descriptor and copies of the arguments: if it dies, the caller returns
  // while dump() still runs.
  struct Request {
    ndk::ScopedFileDescriptor fd;
    std::vector<std::string> args;
    binder_status_t result = STATUS_OK;
  };
  auto request = std::make_shared<Request>();
  request->fd.set(dup(fd));
  for (uint32_t i = 0; i < numArgs; ++i) request->args.emplace_back(args[i]);
  const bool served = binder->AsRemote()->CallAndWait([request](LocalBinder& target) {
    std::vector<const char*> texts;
    for (const std::string& arg : request->args) texts.push_back(arg.c_str());
    request->result =
        target.object()->dump(request->fd.get(), texts.data(), static_cast<uint32_t>(texts.size()));
  });
  return served ? request->result : STATUS_DEAD_OBJECT;
}

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
    AIBinder_DeathRecipient_onBinderDied onBinderDied) {
  if (onBinderDied == nullptr) {
    __android_log_print(ANDROID_LOG_ERROR, "libbinder_ndk", "%s: null onBinderDied", __func__);
    return nullptr;
  }
  return new AIBinder_DeathRecipient{.died = onBinderDied};
}

void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
  if (recipient != nullptr) recipient->unlinked = onUnlinked;
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
  if (recipient == nullptr) return;
  const std::shared_ptr<RecipientState> state = recipient->state;
  delete recipient;
  state->EndAll();
}

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie) {
  if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
  if (cookie != nullptr && recipient->unlinked == nullptr) {
    __android_log_print(ANDROID_LOG_WARN, "libbinder_ndk",
                        "%s: linked with a cookie and without onUnlinked: the cookie may leak",
                        __func__);
  }
  auto link = std::make_shared<Link>();
  link->died = [died = recipient->died, cookie] { died(cookie); };
  if (recipient->unlinked != nullptr) {
    link->unlinked = [unlinked = recipient->unlinked, cookie] { unlinked(cookie); };
  }
  link->key = cookie;
  link->recipient = recipient->state;

  binder_status_t result = NextOutcome(BinderFunction::kLinkToDeath).status;
  if (result == STATUS_OK) {
    RemoteBinder* remote = binder->AsRemote();
    result = remote != nullptr ? remote->Link(recipient->state, link) : STATUS_INVALID_OPERATION;
  }
  if (result != STATUS_OK && link->unlinked != nullptr) link->unlinked();
  return result;
}

binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie) {
  if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
  const binder_status_t scripted = NextOutcome(BinderFunction::kUnlinkToDeath).status;
  RemoteBinder* remote = binder->AsRemote();
  const binder_status_t result =
      remote != nullptr ? remote->Unlink(*recipient->state, cookie) : STATUS_NAME_NOT_FOUND;
  return scripted != STATUS_OK ? scripted : result;
}

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) {
  if (clazz == nullptr) return nullptr;
  return new LocalBinder(clazz, args, Process::Current());
}

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
  if (binder == nullptr || clazz == nullptr) return false;
  if (LocalBinder* local = binder->AsLocal()) {
    return std::string_view(local->clazz()->descriptor) == clazz->descriptor;
  }
  return binder->AsRemote()->IsOfClass(clazz);
}

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) {
  return binder != nullptr ? new AIBinder_Weak{binder->anchor} : nullptr;
}

void AIBinder_Weak_delete(AIBinder_Weak* weakBinder) {
  delete weakBinder;
}

AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder) {
  if (weakBinder == nullptr) return nullptr;
  const ndk::SpAIBinder binder = weakBinder->anchor->Promote();
  AIBinder_incStrong(binder.get());
  return binder.get();
}

bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs) {
  return lhs < rhs;
}

void ABinderProcess_startThreadPool() {
  Process::Host()->pool(Transport::kBinder).Start();
}

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
  // Plus the one that ABinderProcess_startThreadPool() starts.
  Process::Host()->pool(Transport::kBinder).SetMaxThreads(numThreads + 1);
  return true;
}

bool ABinderProcess_isThreadPoolStarted() {
  return Process::Host()->pool(Transport::kBinder).started();
}

void ABinderProcess_joinThreadPool() {
  ABinderProcess_startThreadPool();
  Process::Host()->pool(Transport::kBinder).Run();
}

}  // extern "C"
