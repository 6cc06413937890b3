// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace norvik::qel::audio {

// A call that a dispatch makes.
struct ClientCall {
  void (*callback)(int value, void* cookie);
  void* cookie;
  int value;
  int property;  // for the dispatch's own use
};

// The calls of one dispatch: collected with the lock held, made with it free. Few calls need no
// allocation.
class ClientCalls {
 public:
  void Add(const ClientCall& call) {
    if (size_ < few_.size()) {
      few_[size_++] = call;
      return;
    }
    if (size_++ == few_.size()) many_.assign(few_.begin(), few_.end());
    many_.push_back(call);
  }
  [[nodiscard]] std::span<const ClientCall> all() const {
    return size_ <= few_.size() ? std::span(few_).first(size_) : std::span(many_);
  }
  void Make() const {
    for (const ClientCall& call : all()) call.callback(call.value, call.cookie);
  }

 private:
  size_t size_ = 0;
  std::array<ClientCall, 16> few_;  // not initialized
  std::vector<ClientCall> many_;    // all of them, when there are more
};

}  // namespace norvik::qel::audio
