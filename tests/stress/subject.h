// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A family as the stress tests see it: handles, clients, a device that reports, a service that
// dies.
#pragma once

#include <atomic>
#include <climits>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace norvik::qel::stress {

// Prints what is wrong, and in which test, and ends the program.
[[noreturn]] void Fail(const std::string& what);
void ExpectEqual(long seen, long expected, const char* what);

// What a client has heard: the cookie of its registration.
struct Client {
  std::atomic<int> last{INT_MIN};
  // Deinit...() has returned: another call ends the program.
  std::atomic<bool> closed{false};
  // What it does when it is called. Set before it is registered.
  std::function<void()> then = nullptr;

  static void Hear(int value, void* cookie);
  // The same, for an interface that tells clients apart by their functions.
  static void HearToo(int value, void* cookie) { Hear(value, cookie); }
};

// Threads: any, but one at a time starts and kills the service.
class Subject {
 public:
  virtual ~Subject() = default;

  virtual void Init(void** handle) const = 0;
  virtual void Deinit(void** handle) const = 0;
  // How many clients a handle can have; they have the numbers from 0.
  virtual int clients() const = 0;
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
  virtual bool survives_deaths() const { return true; }
  // How many callbacks the running service holds (sensors: how often they are enabled), and how
  // many of these come from a handle that has all its clients.
  virtual size_t held() const = 0;
  virtual size_t held_by_handle() const = 0;
};

std::unique_ptr<Subject> MakeBattery();
std::unique_ptr<Subject> MakeThermal();
std::unique_ptr<Subject> MakeHidlThermal();
std::unique_ptr<Subject> MakeSensors();

// A handle with its clients' cookies.
class Handle {
 public:
  explicit Handle(const Subject& subject) : subject_(subject), clients_(subject.clients()) {
    subject_.Init(&handle_);
  }
  ~Handle() { Deinit(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  void* get() const { return handle_; }
  Client& client(int number) { return clients_.at(static_cast<size_t>(number)); }
  // Ends the program when one is refused. `strict`: also for the reasons that a death gives, or a
  // registration of the same client on another thread.
  void Register(int number, bool strict);
  void Deregister(int number, bool strict);
  // From now on no client may be called.
  void Deinit();

 private:
  const Subject& subject_;
  std::deque<Client> clients_;  // a deque does not move them
  void* handle_ = nullptr;
};

}  // namespace norvik::qel::stress
