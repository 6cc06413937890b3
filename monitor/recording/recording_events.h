// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the lines of a recording say.
#pragma once

#include "recording/recording.h"
#include "recording/recording_fields.h"

namespace norvik::qel::monitor {

// One line after the other: some say what has changed since those before. Throws LineError.
//
// Threads: the main thread.
class EventReader {
 public:
  // A file of version 1 knows less.
  explicit EventReader(int version) : version_(version) {}

  RecordedEvent Read(RecordingFields fields);

 private:
  Seconds ReadTime(RecordingFields& fields);
  RecordedWhat ReadWhat(RecordingFields& fields);
  DeviceEvent ReadBattery(RecordingFields fields);
  void CheckVersion(bool is_old, const std::string& what) const;

  const int version_;
  Seconds last_{};
  BatteryReport battery_;
};

// What a service says of itself, at the key that names the service.
DeviceEvent ReadServiceEvent(DeviceEvent::Kind kind, RecordingFields& fields,
                             const std::string& key);

}  // namespace norvik::qel::monitor
