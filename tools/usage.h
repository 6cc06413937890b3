// What --help prints.
#pragma once

#include <string>

namespace norvik::qel::tool {

std::string Usage();

}  // namespace norvik::qel::tool
