// Runs gnuplot, which draws the plots.
#pragma once

#include <string>

namespace norvik::qel::tool {

// What the script draws goes to the file, which appears once it is complete. Throws
// std::runtime_error when gnuplot is not there or fails, or the file cannot be written.
void RunGnuplot(const std::string& script, const std::string& path);

}  // namespace norvik::qel::tool
