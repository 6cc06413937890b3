// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the phone's services that can be killed and scripted have in common.
#pragma once

#include <atomic>
#include <memory>

#include "quorvel/fake/script.h"
#include "quorvel/fake/service_process.h"

namespace norvik::qel::simulated {

// A base of the service: every call follows the phone's script first, then does its normal work.
template <typename Operation>
class ScriptedService {
 public:
  // Called before the process is killed. From now on this service takes no outcomes from the
  // scripts: they are for its successor.
  void End() { ended_ = true; }

 protected:
  // The derived class keeps the phone, which owns the scripts.
  explicit ScriptedService(fake::Scripts<Operation>& scripts) : scripts_(scripts) {}
  ~ScriptedService() = default;

  fake::Outcome Next(Operation operation) { return scripts_.on(operation).Next(&ended_); }

 private:
  fake::Scripts<Operation>& scripts_;
  std::atomic<bool> ended_{false};
};

// A service and its process. Both are null while it is not running.
template <typename Pointer>
struct Running {
  std::unique_ptr<fake::ServiceProcess> process = nullptr;
  Pointer service = nullptr;
};

// Ends a service, without the phone's lock. False if it was not running.
template <typename Pointer, typename Operation>
[[nodiscard]] bool Kill(const Running<Pointer>& running, fake::Scripts<Operation>& scripts) {
  if (running.process == nullptr) return false;
  running.service->End();
  running.process->Kill();
  scripts.OpenGates();
  return true;
}

}  // namespace norvik::qel::simulated
