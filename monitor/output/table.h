// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Rows of text in columns.
#pragma once

#include <string>
#include <vector>

namespace norvik::qel::monitor {

// One line per row where the columns fit. In a row that is too wide the last cell continues on
// lines of its own, or each cell does. Without a newline at the end.
std::string Table(const std::vector<std::vector<std::string>>& rows, size_t columns);

}  // namespace norvik::qel::monitor
