// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Files that are written at once.
#pragma once

#include <string>
#include <string_view>

namespace norvik::qel::monitor {

// Replaces a regular file when the content is complete, and otherwise leaves it as it was. Throws
// std::runtime_error.
void WriteFile(const std::string& path, std::string_view content);

}  // namespace norvik::qel::monitor
