// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the device tests share: the command line, clients, and the families by their C functions.
// They run on a phone and on a host alike, so they include the library's header and nothing of the
// host.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "quorvel.h"

namespace norvik::qel::device_test {

using Clock = std::chrono::steady_clock;

// For clients to be called again after a restart of their service.
inline constexpr std::chrono::seconds kReturnLimit(30);

// From the command line. Families are "battery", "sensor" and "thermal".
struct Options {
  std::chrono::seconds limit{5};  // for a first value, and everything else that is awaited
  std::chrono::seconds listening{20};
  std::vector<std::pair<std::string, std::string>> temperatures;  // types and names
  std::set<std::string> required;                                 // these must not be skipped
  std::map<std::string, std::string> restart_commands, change_commands;
};
extern Options options;

// The cookie of a registration.
//
// Threads: any.
class Client {
 public:
  // A battery client is identified by its function: each kId is a client of its own.
  template <int kId>
  static void OnValue(int value, void* cookie) {
    static_cast<Client*>(cookie)->Take(value);
  }

  std::function<void()> on_call;  // set it before the registration

  int calls() const;
  int value() const;  // the last
  // True once there have been so many calls.
  [[nodiscard]] bool WaitForCalls(int count, Clock::duration limit = options.limit) const;

 private:
  void Take(int value);

  mutable std::mutex lock_;
  mutable std::condition_variable called_;
  int calls_ = 0;
  int value_ = 0;
};

// What a client can register for.
struct Subject {
  const char* name;
  const char* family;
  void (*init)(void** handle);
  void (*deinit)(void** handle);
  void (*dump)(void* handle, int fd);
  // `id` is 0 or 1. A null client registers a null function.
  int (*enroll)(void* handle, int id, Client* client);
  int (*leave)(void* handle, int id);
  // Why a registered client is not called; empty if the service can be used.
  std::string (*absence)(void* handle);
};
const std::vector<Subject>& Subjects();
inline void PrintTo(const Subject& subject, std::ostream* out) {
  *out << subject.name;
}

class Handle {
 public:
  explicit Handle(const Subject& subject) : subject_(subject) { subject_.init(&handle_); }
  ~Handle() { Deinit(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  void* get() const { return handle_; }
  void Deinit() { subject_.deinit(&handle_); }
  int Enroll(int id, Client* client) const { return subject_.enroll(handle_, id, client); }
  int Leave(int id) const { return subject_.leave(handle_, id); }

 private:
  const Subject& subject_;
  void* handle_ = nullptr;
};

// The text of a dump, read through a pipe.
std::string DumpText(void (*dump)(void* handle, int fd), void* handle);

// Asks until it is so; false after the limit.
[[nodiscard]] bool Eventually(const std::function<bool()>& is_so,
                              Clock::duration limit = options.limit);

// A handle with a client that has been called. Skipped, with the reason, without a service.
class SubjectTest : public testing::Test {
 protected:
  explicit SubjectTest(const Subject& subject) : subject_(subject), handle_(subject) {}
  void SetUp() override;

  const Subject& subject_;
  Client client_, other_;  // the handle goes before its cookies
  Handle handle_;
};

}  // namespace norvik::qel::device_test
