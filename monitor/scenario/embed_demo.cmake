# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# Makes a source file of the text file TEXT: what demo_scenario.h declares.
file(READ ${TEXT} text)
set(delimiter quorvel)
string(FIND "${text}" ")${delimiter}\"" end)
if(NOT end EQUAL -1)
  message(FATAL_ERROR "${TEXT} holds what would end the literal")
endif()
file(WRITE ${OUTPUT} "// Made from ${TEXT}.
#include \"scenario/demo_scenario.h\"

namespace norvik::qel::monitor {

const std::string_view kDemoScenario = R\"${delimiter}(${text})${delimiter}\";

}  // namespace norvik::qel::monitor
")
