// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The name in the platform's record of a temperature.
#pragma once

#include <android/hardware/thermal/2.0/types.h>

#include <string_view>

namespace norvik::qel::audio {

// All bytes of the name, for as long as the record lives.
inline std::string_view NameOf(const ::android::hardware::thermal::V2_0::Temperature& temperature) {
  return {temperature.name.c_str(), temperature.name.size()};
}

}  // namespace norvik::qel::audio
