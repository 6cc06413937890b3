// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The scenario of the demo: docs/examples/demo.jsonl, embedded at build time.
#pragma once

#include <string_view>

namespace norvik::qel::monitor {

inline constexpr char kDemoScenarioName[] = "demo.jsonl";
extern const std::string_view kDemoScenario;

}  // namespace norvik::qel::monitor
