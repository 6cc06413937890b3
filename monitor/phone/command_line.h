// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The command line of the phone's monitor.
#pragma once

#include <string>

#include "cli/options.h"

namespace norvik::qel::monitor {

// A part of what the host's monitor takes, in the same words. It does with what every phone's C
// library has, so that an Android source tree need not have anything for it.
Options ParsePhoneOptions(int argc, char** argv);

std::string PhoneUsage();

}  // namespace norvik::qel::monitor
