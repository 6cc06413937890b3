// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Numbers with a fraction, read from text.
#pragma once

#include <optional>
#include <string_view>

namespace norvik::qel::monitor {

// The whole text is a number such as 12, 0.5 or 1e6, in every locale. Nothing for anything else,
// including infinity and what no double can hold.
std::optional<double> ParseDecimal(std::string_view text);

}  // namespace norvik::qel::monitor
