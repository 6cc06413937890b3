// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <vector>

#include "thermal/audio_thermal_callback.h"

namespace norvik::qel::audio {

// The AudioThermalCallbacks that a ThermalInfo has removed, until their workers are joined.
//
// Removing an AudioThermalCallback joins its worker. The worker may be inside a client callback
// that (a) is blocked on ThermalInfo's lock, (b) made the call that removes the object, or (c)
// waits for another worker that is in the same position. Joining under the lock, or from a worker,
// could deadlock. Rules:
//
// 1. Under ThermalInfo's lock, in one hold, the object is unregistered from the service, detached
//    from its callback, removed from ThermalInfo's list and added here. So of several threads that
//    deregister its last client only one finds it. From then on it has no client and receives no
//    report.
// 2. Its worker is joined with the lock free. So the worker can take the lock, and it ends as soon
//    as the client callbacks that it is in return.
// 3. A worker (of any object of the library) joins no worker that may be running: it requests the
//    exit and retires the object. So no worker waits for another one or for itself, and a chain of
//    waiting threads ends with one that does not wait.
// 4. Later registrations and deregistrations join the retired workers that have ended, which waits
//    for no client.
// 5. ThermalInfo::Deinitialize() refuses registrations from its beginning on. In the hold of the
//    lock in which it empties the list it takes all that is here, so nothing is added afterwards.
//    What a worker has taken by rule 4 it joins before its own end, which Deinitialize() awaits.
//
// An object that never had a client does not come here: its worker cannot be inside a client
// callback, so it is joined at once, under the lock and by any thread.
//
// Threads: any, with ThermalInfo's lock held, except Join().
class LeavingCallbacks {
 public:
  using Callbacks = std::vector<std::unique_ptr<AudioThermalCallback>>;

  // `callback` has been deinitialized.
  void Add(std::unique_ptr<AudioThermalCallback> callback);
  // What the calling thread has to Join() once the lock is free.
  [[nodiscard]] Callbacks Take();
  // The same for ThermalInfo::Deinitialize(): all of them.
  [[nodiscard]] Callbacks TakeAll();

  // Joins the workers; may wait for clients. Never with a lock held that a client can need.
  static void Join(const Callbacks& callbacks);

 private:
  Callbacks joinable_;  // added in this hold of the lock, by a thread that may join them
  Callbacks retired_;   // added by workers
};

}  // namespace norvik::qel::audio
