// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What --help prints.
#pragma once

#include <string>
#include <string_view>

namespace norvik::qel::monitor {

// Of one command if one is given.
std::string Usage(std::string_view command = {});

}  // namespace norvik::qel::monitor
