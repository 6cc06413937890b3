// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A family as a stress test sees it: handles, clients, a device that reports, a service that dies.
#pragma once

#include <atomic>
#include <climits>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>

#include "quorvel/fake/script.h"

namespace norvik::qel::stress {

inline constexpr int kNothing = INT_MIN;

// What a client has heard: the cookie of its registration.
struct Client {
  std::atomic<long> calls{0};
  std::atomic<int> last{kNothing};
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
  virtual const char* name() const = 0;

  virtual void Init(void** handle) const = 0;
  virtual void Deinit(void** handle) const = 0;
  // How many clients a handle can have; they have the numbers from 0.
  virtual int clients() const = 0;
  [[nodiscard]] virtual int Register(void* handle, int client, Client& cookie) const = 0;
  [[nodiscard]] virtual int Deregister(void* handle, int client) const = 0;
  // Whatever else can be called while anything goes on. `round` makes it vary.
  virtual void Ask(void* handle, int round) const = 0;

  // The device reports something new, of 0 to 999'999, to all clients.
  virtual void Report(int value) = 0;
  // What a client hears of that.
  virtual int Heard(int client, int value) const = 0;

  virtual void Start() = 0;
  // For sensors only while no handle has used the service.
  virtual void Kill() = 0;
  // How many callbacks the running service holds (sensors: how often they are enabled), and how
  // many of these come from a handle that has all its clients.
  virtual size_t held() const = 0;
  virtual size_t held_by_handle() const = 0;
  // The operation that adds to them.
  virtual fake::Script& enlist() = 0;

  // How often the workers' pauses have to be ended after a death until the handle gives up; 0 when
  // the family does not survive its service's death.
  virtual int pauses() const = 0;
  // Whether, after that, a question brings the clients back.
  virtual bool revives_by_question() const { return false; }

  // Hands over what no service should, and looks at the documented results. Returns how much of it.
  virtual long Hostilities(int rounds) = 0;
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
  [[nodiscard]] int Register(int number) {
    return subject_.Register(handle_, number, client(number));
  }
  [[nodiscard]] int Deregister(int number) { return subject_.Deregister(handle_, number); }
  // Ends the program when one is refused.
  void RegisterAll();
  void DeregisterAll();
  // From now on nobody may be called.
  void Deinit();

 private:
  const Subject& subject_;
  std::deque<Client> clients_;  // a deque does not move them
  void* handle_ = nullptr;
};

}  // namespace norvik::qel::stress
