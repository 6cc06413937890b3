// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A family as the stress tests see it: handles, clients, a device that reports, a service that
// dies.
#pragma once

#include <atomic>
#include <cerrno>
#include <climits>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "hang_guard.h"

namespace norvik::qel::stress {

// What a client has heard: the cookie of its registration.
struct Client {
  std::atomic<int> last{INT_MIN};
  // Deinit...() has returned: another call ends the program.
  std::atomic<bool> closed{false};
  // What it does when it is called. Set before it is registered.
  std::function<void()> then = nullptr;

  static void Hear(int value, void* cookie) {
    auto* const self = static_cast<Client*>(cookie);
    if (self->closed) Fail("a client is called after the end of its handle");
    self->last = value;
    if (self->then) self->then();
  }
  // The same, for an interface that tells clients apart by their functions.
  static void HearToo(int value, void* cookie) { Hear(value, cookie); }
};

// Threads: any, but one at a time starts and kills the service.
class Subject {
 public:
  virtual ~Subject() = default;
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;

  void (*const init)(void** handle);
  void (*const deinit)(void** handle);
  const int clients;  // that a handle can have; they have the numbers from 0
  // How many callbacks the service holds of a handle that has all its clients.
  const long held_by_handle;

  [[nodiscard]] virtual int Register(void* handle, int client, Client& cookie) const = 0;
  [[nodiscard]] virtual int Deregister(void* handle, int client) const = 0;
  // What else can be called at any time. `round` makes it vary.
  virtual void Ask(void* handle, int round) const = 0;

  // The device reports something new, of 0 to 999'999, to all clients.
  virtual void Report(int value) = 0;
  // What a client hears of that.
  virtual int Heard(int /*client*/, int value) const { return value; }

  virtual void Start() = 0;
  // For sensors only while no handle has used the service.
  virtual void Kill() = 0;
  // How many callbacks the running service holds (sensors: how often they are enabled).
  virtual long held() const = 0;

 protected:
  Subject(void (*init_handle)(void**), void (*deinit_handle)(void**), int client_count, long held)
      : init(init_handle), deinit(deinit_handle), clients(client_count), held_by_handle(held) {}
};

struct Family {
  std::unique_ptr<Subject> (*make)();
  bool survives_deaths = true;
};
extern const std::map<std::string, Family> kFamilies;

// A handle with its clients' cookies.
class Handle {
 public:
  explicit Handle(const Subject& subject) : subject_(subject), clients_(subject.clients) {
    subject_.init(&handle_);
  }
  ~Handle() { Deinit(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  void* get() const { return handle_; }
  Client& client(int number) { return clients_.at(static_cast<size_t>(number)); }
  // Ends the program when one is refused. `strict`: also for the reasons that a death gives, or a
  // registration of the same client on another thread.
  void Register(int number, bool strict) {
    Expect(subject_.Register(handle_, number, client(number)), strict, "of a registration");
  }
  void Deregister(int number, bool strict) {
    Expect(subject_.Deregister(handle_, number), strict, "of a deregistration");
  }
  // From now on no client may be called.
  void Deinit() {
    if (handle_ == nullptr) return;
    subject_.deinit(&handle_);
    ExpectTrue(handle_ == nullptr, "a handle is still there");
    for (Client& client : clients_) client.closed = true;
  }

 private:
  static void Expect(int result, bool strict, const char* of) {
    if (strict || result != -EINVAL) ExpectEqual(result, 0, std::string("the result ") + of);
  }

  const Subject& subject_;
  std::deque<Client> clients_;  // a deque does not move them
  void* handle_ = nullptr;
};

}  // namespace norvik::qel::stress
