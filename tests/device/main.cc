// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <android/binder_process.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "device_test.h"

namespace norvik::qel::device_test {

namespace {

constexpr char kUsage[] = R"(
usage: quorvel_device_test [OPTION...] [GOOGLETEST OPTION...]

  --temperature TYPE:NAME           a temperature of this device, such as SKIN:back; clients
                                    register for the first, queries read all
  --require FAMILY                  battery, sensor or thermal: fail where tests would be skipped
  --restart-command FAMILY=COMMAND  battery or thermal: how to restart its service
  --change-command FAMILY=COMMAND   how to make its service report a change after the restart
  --limit SECONDS                   for the first value of a client (default 5)
  --listen SECONDS                  how long to watch threads and memory (default 20)
  --soak                            the same for ten minutes
)";

[[noreturn]] void Refuse(const std::string& argument) {
  std::fprintf(stderr, "quorvel_device_test: invalid argument '%s'\n%s", argument.c_str(), kUsage);
  std::exit(2);
}

std::pair<std::string, std::string> Split(const std::string& text, char separator) {
  const size_t end = text.find(separator);
  if (end == std::string::npos || end == 0 || end + 1 == text.size()) Refuse(text);
  return {text.substr(0, end), text.substr(end + 1)};
}

void Parse(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name == "--soak") {
      options.listening = std::chrono::minutes(10);
      continue;
    }
    if (i + 1 == argc) Refuse(name);
    const std::string value = argv[++i];
    if (name == "--temperature") {
      options.temperatures.push_back(Split(value, ':'));
    } else if (name == "--require") {
      if (value != "battery" && value != "sensor" && value != "thermal") Refuse(value);
      options.required.insert(value);
    } else if (name == "--restart-command" || name == "--change-command") {
      const auto command = Split(value, '=');
      if (command.first != "battery" && command.first != "thermal") Refuse(value);
      (name == "--change-command" ? options.change_commands : options.restart_commands)
          .insert(command);
    } else if (name == "--listen" || name == "--limit") {
      const std::chrono::seconds seconds(std::strtol(value.c_str(), nullptr, 10));
      if (seconds.count() <= 0) Refuse(value);
      (name == "--listen" ? options.listening : options.limit) = seconds;
    } else {
      Refuse(name);
    }
  }
}

}  // namespace

}  // namespace norvik::qel::device_test

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (argc > 1 && std::string_view(argv[1]) == "--help") {
    std::printf("%s", norvik::qel::device_test::kUsage);
    return 0;
  }
  norvik::qel::device_test::Parse(argc, argv);
  ABinderProcess_startThreadPool();
  return RUN_ALL_TESTS();
}
