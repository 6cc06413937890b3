// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/fake/platform_scripts.h"

#include <mutex>

#include "next_outcome.h"

namespace norvik::qel::fake {

namespace {

using Tables = PlatformScripts::Tables;

// Never destroyed: threads may call the platform until the process ends.
std::mutex& g_scripts_lock = *new std::mutex;
std::weak_ptr<Tables>& g_scripts QUORVEL_GUARDED_BY(g_scripts_lock) = *new std::weak_ptr<Tables>;

// The tables of all PlatformScripts that exist. With none: new ones, or null.
std::shared_ptr<Tables> CurrentTables(bool make) {
  std::lock_guard<std::mutex> lock(g_scripts_lock);
  std::shared_ptr<Tables> tables = g_scripts.lock();
  if (tables == nullptr && make) g_scripts = tables = std::make_shared<Tables>();
  return tables;
}

}  // namespace

PlatformScripts::PlatformScripts() : tables_(CurrentTables(/*make=*/true)) {}

Outcome NextOutcome(BinderFunction function) {
  const auto tables = CurrentTables(/*make=*/false);
  return tables != nullptr ? tables->binder.on(function).Next() : Outcome{};
}

Outcome NextOutcome(SensorFunction function) {
  const auto tables = CurrentTables(/*make=*/false);
  return tables != nullptr ? tables->sensor.on(function).Next() : Outcome{};
}

}  // namespace norvik::qel::fake
