// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The interface of a family for the stress tests: handles, clients, reports, and deaths of the
// service.
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

// The cookie of a registration, with the last value that the client has received.
struct Client {
  std::atomic<int> last{INT_MIN};
  // True once Deinit...() has returned: any further call ends the program.
  std::atomic<bool> closed{false};
  // Runs in each call. Set it before the registration.
  std::function<void()> then = nullptr;

  static void Hear(int value, void* cookie) {
    auto* const self = static_cast<Client*>(cookie);
    if (self->closed) Fail("a client is called after the end of its handle");
    self->last = value;
    if (self->then) self->then();
  }
  // A second function, because battery clients are identified by their functions.
  static void HearToo(int value, void* cookie) { Hear(value, cookie); }
};

// Threads: any, but only one at a time may start or kill the service.
class Subject {
 public:
  virtual ~Subject() = default;
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;

  void (*const init)(void** handle);
  void (*const deinit)(void** handle);
  const int clients;  // the number of clients of a handle; they are numbered from 0
  // The number of callbacks that the service holds for a handle with all its clients.
  const long held_by_handle;

  [[nodiscard]] virtual int Register(void* handle, int client, Client& cookie) const = 0;
  [[nodiscard]] virtual int Deregister(void* handle, int client) const = 0;
  // Calls the family's other functions, which may be called at any time. `round` selects some.
  virtual void Ask(void* handle, int round) const = 0;

  // Makes the device report a new value from 0 to 999'999 to all clients.
  virtual void Report(int value) = 0;
  // The value that a client receives for a report of `value`.
  virtual int Heard(int /*client*/, int value) const { return value; }

  virtual void Start() = 0;
  // For sensors only while no handle uses the service.
  virtual void Kill() = 0;
  // The number of callbacks that the running service holds (sensors: enabled sensors).
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
  // Ends the program if the call fails. Unless `strict`, -EINVAL is accepted: a death, or a
  // registration of the same client on another thread, may cause it.
  void Register(int number, bool strict) {
    Expect(subject_.Register(handle_, number, client(number)), strict, "of a registration");
  }
  void Deregister(int number, bool strict) {
    Expect(subject_.Deregister(handle_, number), strict, "of a deregistration");
  }
  // After this no client may be called.
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
