// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A fake sysfs for a test. It replaces the machine's own sysfs in the test program.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <umockdev.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "quorvel/services/service_event.h"
#include "waiting.h"

namespace norvik::qel {

using Files = std::map<std::string, std::string>;

inline Files With(Files files, const Files& others) {
  for (const auto& [file, content] : others) files[file] = content;
  return files;
}

// The text with its C escape sequences replaced.
inline std::string Unescaped(const std::string& text) {
  const g_autofree gchar* plain = g_strcompress(text.c_str());
  return plain;
}

// A machine that has only the devices that a test adds. Most methods use the one subsystem that is
// given to the constructor.
class Machine {
 public:
  explicit Machine(const char* subsystem)
      : testbed_(umockdev_testbed_new()), subsystem_(subsystem) {
    // The fake sysfs has no directories without devices, so /sys/kernel shows that it is not used.
    EXPECT_FALSE(std::filesystem::exists("/sys/kernel")) << "run this under umockdev-wrapper";
  }
  ~Machine() { g_object_unref(testbed_); }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // Adds all devices (Load) or one device of a file in umockdev's format.
  void Load(const std::string& path) {
    g_autoptr(GError) error = nullptr;
    umockdev_testbed_add_from_file(testbed_, path.c_str(), &error);
    if (error != nullptr) ADD_FAILURE() << path << ": " << error->message;
  }
  void LoadDevice(const std::string& path, const std::string& name) {
    std::ifstream in(path);
    std::string text;
    bool is_wanted = false;
    for (std::string line; std::getline(in, line);) {
      if (line.starts_with("P: ")) is_wanted = line == "P: /devices/" + name;
      if (is_wanted) text += line + "\n";
    }
    EXPECT_TRUE(umockdev_testbed_add_from_string(testbed_, text.c_str(), nullptr)) << name;
  }

  // Adds a device and announces it with a uevent.
  void Add(const std::string& name, const Files& files) { AddTo(subsystem_, name, files); }
  void AddTo(const std::string& subsystem, const std::string& name, const Files& files) {
    std::vector<gchar*> attributes;
    for (const auto& [file, content] : files) {
      attributes.push_back(const_cast<gchar*>(file.c_str()));
      attributes.push_back(const_cast<gchar*>(content.c_str()));
    }
    attributes.push_back(nullptr);
    gchar* no_properties[] = {nullptr};
    g_free(umockdev_testbed_add_devicev(testbed_, subsystem.c_str(), name.c_str(),
                                        /*parent=*/nullptr, attributes.data(), no_properties));
  }
  // Removes a device. As in the kernel, the uevent comes before its files disappear.
  void Remove(const std::string& name) {
    Announce(name, "remove");
    Vanish(name);
  }
  void Vanish(const std::string& name) {
    umockdev_testbed_remove_device(testbed_, DevPath(name).c_str());
  }
  void Set(const std::string& name, const std::string& file, const std::string& content) {
    umockdev_testbed_set_attribute(testbed_, DevPath(name).c_str(), file.c_str(), content.c_str());
  }
  // The content of a file; nullopt if it is absent.
  std::optional<std::string> Get(const std::string& name, const std::string& file) {
    std::ifstream in(RealPath(name, file));
    if (!in) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  void Put(const std::string& name, const std::string& file,
           const std::optional<std::string>& content) {
    std::filesystem::remove(RealPath(name, file));
    if (content) Set(name, file, *content);
  }
  void Announce(const std::string& name, const char* action = "change") {
    umockdev_testbed_uevent(testbed_, DevPath(name).c_str(), action);
  }
  void Change(const std::string& name, const std::string& file, const std::string& content) {
    Set(name, file, content);
    Announce(name);
  }
  // Unlist() removes a device from the list of devices; List() adds it. Neither sends a uevent.
  void Unlist(const std::string& name) { std::filesystem::remove(ListEntry(name)); }
  void List(const std::string& name) {
    std::filesystem::create_directory_symlink("../../devices/" + name, ListEntry(name));
  }
  // Write-only for its owner: libudev does not read such a file even as root.
  void MakeUnreadable(const std::string& name, const std::string& file) {
    EXPECT_EQ(chmod(RealPath(name, file).c_str(), 0200), 0);
  }

 private:
  static std::string DevPath(const std::string& name) { return "/sys/devices/" + name; }
  std::string Root() {
    const g_autofree gchar* root = umockdev_testbed_get_root_dir(testbed_);
    return root;
  }
  std::string RealPath(const std::string& name, const std::string& file) {
    return Root() + DevPath(name) + "/" + file;
  }
  std::string ListEntry(const std::string& name) {
    return Root() + "/sys/class/" + subsystem_ + "/" + name;
  }

  UMockdevTestbed* const testbed_;
  const std::string subsystem_;
};

// Waits until `is_so` while three threads call `ask`. A test must not change the fake sysfs at that
// time: umockdev keeps the program's open files in a table without a lock, and may lose a uevent
// when another thread uses that table.
[[nodiscard]] inline bool EventuallyWhileAsked(const std::function<bool()>& is_so,
                                               const std::function<void()>& ask) {
  std::atomic<bool> done = false;
  std::vector<std::thread> askers;
  for (int i = 0; i < 3; ++i) {
    askers.emplace_back([&] {
      while (!done) ask();
    });
  }
  const bool was_so = Eventually(is_so);
  done = true;
  for (std::thread& asker : askers) asker.join();
  return was_so;
}

// A machine, and the notices of the service that reads its subsystem.
class LinuxFixture : public testing::Test {
 protected:
  // `marker` is a device name prefix. An empty `marker_file` in a device causes a notice, by which
  // Notices() recognizes that earlier events have been handled.
  LinuxFixture(const char* subsystem, std::string marker, std::string marker_file)
      : machine_(subsystem), marker_(std::move(marker)), marker_file_(std::move(marker_file)) {}

  // An observer that keeps the service's notices. Threads: any.
  services::ServiceObserver observer() {
    return [this](const services::ServiceEvent& event) {
      if (event.kind == services::ServiceEvent::Kind::kNotice) notices_.Put(event.detail);
    };
  }
  // The notices since the last call.
  std::vector<std::string> Notices() {
    const std::string marker = marker_ + std::to_string(++markers_);
    machine_.Add(marker, {{marker_file_, "\n"}});
    std::vector<std::string> notices;
    while (std::optional<std::string> notice = notices_.Take()) {
      if (*notice == marker + "/" + marker_file_ + ": empty") return notices;
      notices.push_back(*std::move(notice));
    }
    ADD_FAILURE() << "no notice of the marker";
    return notices;
  }

  Machine machine_;
  Seen<std::string> notices_;

 private:
  const std::string marker_;
  const std::string marker_file_;
  int markers_ = 0;
};

}  // namespace norvik::qel
