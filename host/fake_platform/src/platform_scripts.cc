// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/fake/platform_scripts.h"

#include <mutex>

#include "next_outcome.h"

namespace norvik::qel::fake {

namespace {

using Tables = PlatformScripts::Tables;

// Never destroyed: threads may call the platform until the process ends.
struct Current {
  std::mutex lock;
  std::weak_ptr<Tables> tables QUORVEL_GUARDED_BY(lock);
};

Current& TheCurrent() {
  static Current& current = *new Current;
  return current;
}

std::shared_ptr<Tables> CurrentOrNewTables() {
  Current& current = TheCurrent();
  std::lock_guard<std::mutex> lock(current.lock);
  std::shared_ptr<Tables> tables = current.tables.lock();
  if (tables == nullptr) current.tables = tables = std::make_shared<Tables>();
  return tables;
}

std::shared_ptr<Tables> CurrentTables() {
  Current& current = TheCurrent();
  std::lock_guard<std::mutex> lock(current.lock);
  return current.tables.lock();
}

}  // namespace

PlatformScripts::PlatformScripts() : tables_(CurrentOrNewTables()) {}

Outcome NextOutcome(BinderFunction function) {
  const auto tables = CurrentTables();
  return tables != nullptr ? tables->binder.on(function).Next() : Outcome{};
}

Outcome NextOutcome(SensorFunction function) {
  const auto tables = CurrentTables();
  return tables != nullptr ? tables->sensor.on(function).Next() : Outcome{};
}

}  // namespace norvik::qel::fake
