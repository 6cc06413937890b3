// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the three families' Init...(), Deinit...() and Dump...() have in common. A handle is an
// untyped pointer to the family's object.
#pragma once

namespace norvik::qel::audio {

// Creates an object, initializes it and stores it in `*handle`. False when it cannot be
// initialized: then `*handle` is null. True, too, for a null `handle`: nothing is created.
template <typename Object>
[[nodiscard]] bool InitHandle(void** handle) {
  if (handle == nullptr) return true;
  auto* object = new Object;
  if (object->Initialize()) {
    *handle = object;
    return true;
  }
  object->Deinitialize();
  delete object;
  *handle = nullptr;
  return false;
}

// Ends the object in `*handle`, if there is one, and clears `*handle`.
template <typename Object>
void DeinitHandle(void** handle) {
  if (handle == nullptr || *handle == nullptr) return;
  auto* object = static_cast<Object*>(*handle);
  object->Deinitialize();
  delete object;
  *handle = nullptr;
}

template <typename Object>
void DumpHandle(void* handle, int fd) {
  if (handle != nullptr) static_cast<Object*>(handle)->Dump(fd);
}

}  // namespace norvik::qel::audio
