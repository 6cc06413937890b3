// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Numbers with a fraction, as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace norvik::qel::monitor {

// Parses a number such as 12, 0.5 or 1e6, with a point in every locale. nullopt for any other text,
// including infinity and numbers outside the range of a double.
std::optional<double> ParseDecimal(std::string_view text);
// The shortest text that reads back as the same finite number, with a point in every locale.
std::string DecimalText(double number);

}  // namespace norvik::qel::monitor
