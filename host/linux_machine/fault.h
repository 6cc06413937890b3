// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A file or device that is unreadable or invalid, as a message for the user.
#pragma once

#include <string>

namespace norvik::qel::linux_machine {

struct Fault {
  std::string device;  // "BAT0", or the whole class: "thermal zones"
  std::string file;    // "capacity"; empty: the whole device
  std::string what;    // "\"250\" is not within 0 to 100"
};

// "BAT0/capacity: ..."
std::string NoticeOf(const Fault& fault);

}  // namespace norvik::qel::linux_machine
