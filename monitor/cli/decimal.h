// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Numbers with a fraction, as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace norvik::qel::monitor {

// The whole text is a number such as 12, 0.5 or 1e6, in every locale. Nothing for anything else,
// including infinity and what no double can hold.
std::optional<double> ParseDecimal(std::string_view text);
// The shortest text for a finite number, with a point in every locale.
std::string DecimalText(double number);

}  // namespace norvik::qel::monitor
