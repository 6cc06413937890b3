// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recorder.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace norvik::qel::monitor {

namespace {

std::string InWords(int error) {
  return std::generic_category().message(error);
}

int Open(const std::string& path, ExistingFile existing) {
  if (path == kStandardStream) return fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  const int how = existing == ExistingFile::kRefuse ? O_EXCL : O_TRUNC;
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | how, 0666);
  if (fd >= 0) return fd;
  if (errno == EEXIST) {
    throw std::runtime_error(path + " exists already; --force overwrites it");
  }
  throw std::runtime_error("cannot write " + path + ": " + InWords(errno));
}

}  // namespace

Recorder::Recorder(const std::string& path, ExistingFile existing, std::string_view device)
    : path_(path), begin_(std::chrono::system_clock::now()), fd_(Open(path, existing)) {
  if (WriteLine(RecordingWriter::Header(device, begin_))) return;
  close(fd_);
  // The file is new and empty.
  if (existing == ExistingFile::kRefuse && path_ != kStandardStream) unlink(path_.c_str());
  throw std::runtime_error(failure_);
}

Recorder::~Recorder() {
  close(fd_);
}

bool Recorder::Note(const Event& event) {
  if (const auto* change = std::get_if<ValueChange>(&event.what)) {
    const ClientCalled called = {.property = std::string(change->property->key),
                                 .value = change->new_value};
    return Write({.at = {}, .what = called}, event.time);
  }
  return Write({.at = {}, .what = std::get<DeviceEvent>(event.what)}, event.time);
}

void Recorder::NoteAct(const RecordedWhat& what) {
  static_cast<void>(Write({.at = {}, .what = what}, std::chrono::system_clock::now()));
}

bool Recorder::Write(RecordedEvent event, WallTime time) {
  // Times never run backwards in a recording, even when the clock is set.
  last_ = std::max(last_, Seconds(time - begin_));
  event.at = last_;
  auto line = writer_.Line(event);
  return line ? WriteLine(std::move(*line)) : !is_closed_;
}

bool Recorder::WriteLine(std::string line) {
  if (is_closed_) return false;
  line += '\n';
  std::string_view rest = line;
  while (!rest.empty()) {
    const ssize_t written = write(fd_, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<size_t>(written));
    } else if (errno != EINTR) {
      is_closed_ = true;
      if (errno == EPIPE) return false;  // the reader of standard output has left
      failure_ = "cannot write " + path_ + ": " + InWords(errno);
      // Half a line would make the file unreadable.
      const off_t half = static_cast<off_t>(line.size() - rest.size());
      static_cast<void>(ftruncate(fd_, lseek(fd_, 0, SEEK_CUR) - half) == 0);
      return false;
    }
  }
  ++line_count_;
  return true;
}

}  // namespace norvik::qel::monitor
