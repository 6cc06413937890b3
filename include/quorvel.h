/* SPDX-FileCopyrightText: 2026 The quorvel developers
 * SPDX-License-Identifier: Apache-2.0
 */

/**
 * @file quorvel.h
 * @brief Battery, sensors and heat of the device, for its audio service, as plain C functions.
 *
 * For C11 and C++. It is the only header to include.
 *
 * @section quorvel_handles Handles
 *
 * Each family (battery, sensor, thermal) has an object behind an opaque handle:
 * - Init...() makes the object, every other function of the family takes its handle, Deinit...()
 *   destroys it.
 * - Any number of handles may exist side by side. Each has its own threads and its own connection
 *   to the platform's service.
 * - Init...() makes the worker threads and does not contact the service. If the system cannot
 *   create a thread, Init...() throws std::system_error: the handle variable is unchanged, what was
 *   made by then is leaked, and a C program ends.
 *
 * @section quorvel_results Results
 *
 * - Functions with a result return 0 or a value, or a negated errno number on failure. Each lists
 *   its own. errno is not used.
 * - A NULL handle gives -EINVAL. Functions without a result ignore it.
 *
 * @section quorvel_threads Threads
 *
 * - Functions may be called from any thread, concurrently, and from inside callbacks. Deinit...()
 *   is the exception.
 * - Deinit...() must not run concurrently with any other call on the same handle, except calls made
 *   from that handle's own callbacks.
 * - Deinit...() must not be called from a callback of the same handle: it waits for callbacks to
 *   return.
 *
 * @section quorvel_callbacks Callbacks
 *
 * - Callbacks run on a worker thread of the library, never on the thread of a caller.
 * - They run one at a time per handle. Thermal: one at a time per type, see ThermalCallbackFunc.
 * - No lock of the library is held meanwhile.
 * - A slow callback delays the clients that share its thread, and no others.
 *
 * @section quorvel_cookies Lifetime of cookies
 *
 * A call that is already under way may still arrive after its client has been deregistered. Keep
 * what a cookie points to until Deinit...() has returned: after that no client is called.
 *
 * @section quorvel_changes Several changes before a call
 *
 * If several changes arrive before a client is called, the client is called once:
 * - Battery and sensor clients receive the **latest** value.
 * - Thermal clients receive only the **oldest** change. The others are dropped, including the first
 *   call of a new client. The severity that a client received last may be outdated until the next
 *   change.
 *
 * @section quorvel_retries Retries and giving up
 *
 * The library looks for a service that died or is late in the background:
 *
 * | situation                                                     | attempts  | pause   |
 * |---------------------------------------------------------------|-----------|---------|
 * | battery: the service died while there are clients             | 10        | 200 ms  |
 * | battery: the first client finds no service                    | 10        | 200 ms  |
 * | thermal: the service died                                     | 5         | 30 ms   |
 * | thermal: these five failed while there are clients            | 10 more   | 1000 ms |
 * | thermal: registrations wait for a service                     | 10        | 1000 ms |
 * | sensor: clients wait for the service                          | no limit  | 1000 ms |
 * | sensor: the service was missing, now runs, and cannot be used | 10 in all | 1000 ms |
 *
 * - Battery and thermal: a death, a first client or a waiting registration that comes while
 *   attempts of its kind are under way joins them. It gets the attempts that are left, or one more
 *   in the pause after the last one.
 * - Battery: an attempt takes up to five seconds longer while the device declares a service that
 *   does not run, because the platform's look-up waits for it.
 * - When all attempts have failed the library **gives up**: clients stay registered and are not
 *   called. Each family says what ends that: @ref battery_link, @ref sensor_late,
 *   @ref thermal_link.
 * - The library does not survive the end of the sensor service, see @ref sensor_death.
 *
 * @section quorvel_blocking Blocking
 *
 * A handle calls its service with the handle's lock held. While such a call waits for the service,
 * one of the background attempts included, other operations on the same handle wait as well:
 *
 * | operation                            | battery | sensor | thermal         |
 * |--------------------------------------|---------|--------|-----------------|
 * | register, deregister, Deinit...()    | waits   | waits  | waits           |
 * | query of the service                 | waits   | -      | waits           |
 * | cached query                         | never   | -      | waits           |
 * | Dump...()                            | never   | never  | waits           |
 * | calls to clients that have not begun | wait    | wait   | of one type (*) |
 *
 * (*) Calls to thermal clients wait while the call to the service concerns their type.
 *
 * Other handles do not wait, with one exception: the platform notifies the battery or thermal
 * handles of a death one after another, so a handle that waits delays the notification of the next.
 *
 * @section quorvel_dumps Dumps
 *
 * A Dump...() function writes text for people, not for programs:
 * - It composes the text first and then writes it, with no lock held. A descriptor that takes
 *   nothing, such as a full pipe, delays only the caller.
 * - A write error ends the dump.
 * - A reader that has gone does not end the process: no SIGPIPE is raised.
 *
 * @section quorvel_process The process
 *
 * - The program must start the platform's binder threads, for example with
 *   ABinderProcess_startThreadPool(). Without them no report and no death notification of the
 *   health service or of an AIDL thermal service arrives, and their clients are never called. For a
 *   HIDL thermal service and for sensors the platform starts a thread if there is none.
 * - The services must run in other processes. A service in the same process would be called, and
 *   would call back, on the caller's thread: a thermal service that notifies inside a query
 *   deadlocks, and so does a health service that reports inside a call.
 * - The library stays mapped after dlclose(), because the platform may still hold objects of it.
 */
#ifndef QUORVEL_H
#define QUORVEL_H

#include <stdbool.h>
#include <stddef.h>

/**
 * @name Version
 * The version of this header, by the rules of semantic versioning: a program built against one
 * version runs with every later version of the same major number. The library's file name has the
 * major number.
 * @{
 */
/** @brief Incremented for changes that break callers. */
#define QUORVEL_VERSION_MAJOR 1
/** @brief Incremented for additions. */
#define QUORVEL_VERSION_MINOR 0
/** @brief Incremented for bug fixes. */
#define QUORVEL_VERSION_PATCH 0
/** @} */

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup battery Battery and chargers
 * @brief Four properties, taken from the platform's health service.
 *
 * The service is AIDL health, instance "default".
 *
 * | property                | value                                                         |
 * |-------------------------|---------------------------------------------------------------|
 * | battery level           | percent, 0 to 100                                             |
 * | battery cycle count     | full charge cycles so far                                     |
 * | wireless charger online | #QUORVEL_CHARGER_ONLINE (0) or #QUORVEL_CHARGER_OFFLINE (1)   |
 * | dock charger online     | #QUORVEL_CHARGER_ONLINE (0) or #QUORVEL_CHARGER_OFFLINE (1)   |
 *
 * Each is #QUORVEL_BATTERY_UNKNOWN (-1) until the first report has arrived. Values are passed on as
 * the service reports them, not checked.
 *
 * @section battery_link The link to the health service
 *
 * - The first client of any property makes the link. The last client to leave ends it. Attempts to
 *   link that are under way when the last client leaves go on, and the link that they make stays
 *   for the next client.
 * - A new link brings a report at once, so clients receive the first values without asking. A
 *   report that only repeats a known value causes no call, see BatteryInfoCallback.
 * - When the service dies, the values stay as they are and the library reconnects in the
 *   background; likewise when the first client finds no service. See @ref quorvel_retries.
 * - After a reconnection the service reports, and clients receive what has changed.
 * - After the library has given up, clients are not called, cached values grow old, and registering
 *   further clients changes nothing. A query of the service succeeds once the service is back, but
 *   does not link. A first client brings the link back: deregister all clients of all four
 *   properties, then register again. (C++ callers that use the class can call
 *   BatteryInfo::ReconnectToHealthService() instead.)
 *
 * @section battery_blocking Blocking
 *
 * @ref quorvel_blocking has the rules. A look-up of the service takes up to five seconds while the
 * device declares a service that does not run. A call to the service takes as long as the service
 * takes.
 * @{
 */

/** @brief What a battery property can be besides a reported value. */
enum {
  QUORVEL_BATTERY_UNKNOWN = -1 /**< no report has arrived yet */
};

/**
 * @brief The values of the two charger properties.
 *
 * @warning They are inverted: 0 is online.
 */
enum {
  QUORVEL_CHARGER_ONLINE = 0, /**< the charger is online */
  QUORVEL_CHARGER_OFFLINE = 1 /**< the charger is not online */
};

/**
 * @brief Receives the value of the property that the client registered for.
 * @param value   the value, see the table of @ref battery.
 * @param cookie  as given at registration.
 *
 * Called
 * - when the value has changed; several changes may become one call, see @ref quorvel_changes;
 * - once soon after a registration that finds the value known. The other clients of the property
 *   are called again then, too.
 *
 * Not called before the first value has arrived.
 *
 * @note A first client, one that registers while no property has a client, is not called for a
 *       known value at registration. It makes the link and receives from it only what differs from
 *       the value known before. Where that matters, read the cached value after registering.
 * @note Threads: see @ref quorvel_callbacks.
 */
typedef void (*BatteryInfoCallback)(int value, void* cookie);

/**
 * @brief Makes a battery object with two worker threads.
 * @param handle_out  receives the handle, or NULL on failure. An earlier value is overwritten, not
 *                    destroyed. If NULL, nothing happens.
 *
 * @note Does not contact the health service.
 * @warning Throws if the system cannot create a thread, see @ref quorvel_handles.
 */
void InitBatteryInfo(void** handle_out);

/**
 * @brief Ends all calls to clients, leaves the health service and destroys the object.
 * @param handle_inout  the variable with the handle; NULL afterwards. If it is NULL or holds NULL,
 *                      nothing happens.
 *
 * Remaining registrations need not be undone first. After the return no client is called, and
 * cookies may be freed.
 *
 * @note Blocks until each of these that applies is over:
 *       - a callback that is running;
 *       - an attempt to link that is under way: five seconds if the device declares a service that
 *         does not run;
 *       - a look-up of the service, unless it is known: likewise five seconds;
 *       - if linked, the call that ends the registration at the service.
 * @warning See @ref quorvel_threads for what must not run concurrently.
 */
void DeinitBatteryInfo(void** handle_inout);

/**
 * @brief Writes the link state, the four values and their numbers of clients to a descriptor.
 * @param handle  a battery handle. If NULL, nothing is written.
 * @param fd      an open file descriptor; it stays open.
 *
 * @note Never waits for the library or the service, see @ref quorvel_dumps. The parts of the text
 *       may be from different moments.
 */
void DumpBatteryInfo(void* handle, int fd);

/**
 * @brief Reads the battery level.
 * @param handle      a battery handle.
 * @param use_cached  true: returns the last known value. false: asks the health service.
 *
 * Asking the service refreshes the cached values of all four properties. Clients receive a change
 * found this way together with the next change that the service reports, or when a further client
 * registers for a property with a known value.
 *
 * @retval 0..100                   percent, as reported.
 * @retval QUORVEL_BATTERY_UNKNOWN  -1: no value is known yet.
 * @retval -EAGAIN                  the service cannot be asked, or fails (use_cached false).
 * @retval -EINVAL                  `handle` is NULL.
 * @note With use_cached true it returns at once. With use_cached false it blocks for the service's
 *       answer, and up to five seconds if the device declares a service that does not run.
 */
int GetBatteryLevel(void* handle, bool use_cached);

/**
 * @brief Reads the number of charge cycles.
 * @param handle      a battery handle.
 * @param use_cached  true: returns the last known value. false: asks the health service.
 *
 * @retval count                    full charge cycles so far, as reported.
 * @retval QUORVEL_BATTERY_UNKNOWN  -1: no value is known yet.
 * @retval -EAGAIN                  the service cannot be asked, or fails (use_cached false).
 * @retval -EINVAL                  `handle` is NULL.
 * @note Caching and blocking: as GetBatteryLevel().
 */
int GetBatteryCycleCount(void* handle, bool use_cached);

/**
 * @brief Reads whether a wireless charger is online.
 * @param handle      a battery handle.
 * @param use_cached  true: returns the last known value. false: asks the health service.
 *
 * @retval QUORVEL_CHARGER_ONLINE   0: it is online.
 * @retval QUORVEL_CHARGER_OFFLINE  1: it is not online.
 * @retval QUORVEL_BATTERY_UNKNOWN  -1: no value is known yet.
 * @retval -EAGAIN                  the service cannot be asked, or fails (use_cached false).
 * @retval -EINVAL                  `handle` is NULL.
 * @note Caching and blocking: as GetBatteryLevel().
 * @warning Not a truth value: 0 is online.
 */
int GetWirelessChargerIsOnline(void* handle, bool use_cached);

/**
 * @brief Reads whether a dock charger is online.
 * @param handle      a battery handle.
 * @param use_cached  true: returns the last known value. false: asks the health service.
 *
 * @retval QUORVEL_CHARGER_ONLINE   0: it is online.
 * @retval QUORVEL_CHARGER_OFFLINE  1: it is not online.
 * @retval QUORVEL_BATTERY_UNKNOWN  -1: no value is known yet.
 * @retval -EAGAIN                  the service cannot be asked, or fails (use_cached false).
 * @retval -EINVAL                  `handle` is NULL.
 * @note Caching and blocking: as GetBatteryLevel().
 * @warning Not a truth value: 0 is online.
 */
int GetDockChargerIsOnline(void* handle, bool use_cached);

/**
 * @brief Registers `callback` for battery level changes.
 * @param handle    a battery handle.
 * @param callback  identifies the registration: one function can be registered once per property,
 *                  whatever the cookie.
 * @param cookie    passed to every call; may be NULL. For its lifetime see @ref quorvel_cookies.
 *
 * @retval 0        registered, also while the service is away: the client is called when the link
 *                  is back, unless the library gives up before (@ref quorvel_retries).
 * @retval -EINVAL  `handle` or `callback` is NULL, or `callback` is registered for this property
 *                  already.
 * @note The first client of any property makes the link and blocks for the service's answer.
 */
int RegisterBatteryLevelCallback(void* handle, BatteryInfoCallback callback, void* cookie);

/**
 * @brief Deregisters `callback` from battery level changes.
 * @param handle    a battery handle.
 * @param callback  as registered.
 *
 * @retval 0        deregistered.
 * @retval -EINVAL  `handle` or `callback` is NULL, or `callback` is not registered for this
 *                  property.
 * @note May be called from inside a callback.
 * @note The last client of all properties ends the link and blocks for the service's answer; if no
 *       service is linked, for a look-up of the service.
 * @warning A call already under way may arrive after the return, see @ref quorvel_cookies.
 */
int DeregisterBatteryLevelCallback(void* handle, BatteryInfoCallback callback);

/**
 * @brief Registers `callback` for changes of the cycle count.
 * @param handle    a battery handle.
 * @param callback  identifies the registration, one per property.
 * @param cookie    passed to every call; may be NULL. For its lifetime see @ref quorvel_cookies.
 *
 * @retval 0        registered, also while the service is away.
 * @retval -EINVAL  `handle` or `callback` is NULL, or `callback` is registered for this property
 *                  already.
 * @note Blocking and an absent service: as RegisterBatteryLevelCallback().
 */
int RegisterBatteryCycleCountCallback(void* handle, BatteryInfoCallback callback, void* cookie);

/**
 * @brief Deregisters `callback` from changes of the cycle count.
 * @param handle    a battery handle.
 * @param callback  as registered.
 *
 * @retval 0        deregistered.
 * @retval -EINVAL  `handle` or `callback` is NULL, or `callback` is not registered for this
 *                  property.
 * @note Threads and blocking: as DeregisterBatteryLevelCallback().
 * @warning A call already under way may arrive after the return, see @ref quorvel_cookies.
 */
int DeregisterBatteryCycleCountCallback(void* handle, BatteryInfoCallback callback);

/**
 * @brief Registers `callback` for a wireless charger that comes online or leaves.
 * @param handle    a battery handle.
 * @param callback  identifies the registration, one per property. Receives #QUORVEL_CHARGER_ONLINE
 *                  (0) or #QUORVEL_CHARGER_OFFLINE (1).
 * @param cookie    passed to every call; may be NULL. For its lifetime see @ref quorvel_cookies.
 *
 * @retval 0        registered, also while the service is away.
 * @retval -EINVAL  `handle` or `callback` is NULL, or `callback` is registered for this property
 *                  already.
 * @note Blocking and an absent service: as RegisterBatteryLevelCallback().
 */
int RegisterWirelessChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback,
                                            void* cookie);

/**
 * @brief Deregisters `callback` from the wireless charger.
 * @param handle    a battery handle.
 * @param callback  as registered.
 *
 * @retval 0        deregistered.
 * @retval -EINVAL  `handle` or `callback` is NULL, or `callback` is not registered for this
 *                  property.
 * @note Threads and blocking: as DeregisterBatteryLevelCallback().
 * @warning A call already under way may arrive after the return, see @ref quorvel_cookies.
 */
int DeregisterWirelessChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback);

/**
 * @brief Registers `callback` for a dock charger that comes online or leaves.
 * @param handle    a battery handle.
 * @param callback  identifies the registration, one per property. Receives #QUORVEL_CHARGER_ONLINE
 *                  (0) or #QUORVEL_CHARGER_OFFLINE (1).
 * @param cookie    passed to every call; may be NULL. For its lifetime see @ref quorvel_cookies.
 *
 * @retval 0        registered, also while the service is away.
 * @retval -EINVAL  `handle` or `callback` is NULL, or `callback` is registered for this property
 *                  already.
 * @note Blocking and an absent service: as RegisterBatteryLevelCallback().
 */
int RegisterDockChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback, void* cookie);

/**
 * @brief Deregisters `callback` from the dock charger.
 * @param handle    a battery handle.
 * @param callback  as registered.
 *
 * @retval 0        deregistered.
 * @retval -EINVAL  `handle` or `callback` is NULL, or `callback` is not registered for this
 *                  property.
 * @note Threads and blocking: as DeregisterBatteryLevelCallback().
 * @warning A call already under way may arrive after the return, see @ref quorvel_cookies.
 */
int DeregisterDockChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback);

/** @} */

/**
 * @defgroup sensor Proximity and hinge angle
 * @brief Two sensors, taken from the platform's sensor service.
 *
 * | sensor      | value                                                                        |
 * |-------------|------------------------------------------------------------------------------|
 * | proximity   | distance in centimetres; many sensors know two values only, near (0) and far |
 * | hinge angle | angle between the halves of a folding device in degrees, 0 when it is closed |
 *
 * - Readings are whole numbers, truncated towards zero: 4.9 cm is 4, -0.5 degrees is 0.
 * - A reading outside the range of int becomes the nearest int; NaN becomes 0.
 * - A reading is 0 until the sensor has reported for the first time.
 * - The first client of a sensor enables it, at the sensor's fastest rate and without batching. The
 *   last client to leave disables it.
 *
 * @section sensor_late A sensor service that is late
 *
 * - While the sensor service does not run yet, registrations succeed and wait. The library looks
 *   for the service until it runs (@ref quorvel_retries) and then enables the sensors that have
 *   clients.
 * - These clients are not called at once: their first call is for the sensor's next event.
 * - A sensor that turns out not to exist, or that the service refuses, is given up. Its clients
 *   stay registered and are not called until all of them have left and a first client registers
 *   again.
 * - A service that runs but cannot be used (no sensor manager, looper or event queue) is rarer. If
 *   it was missing before, the library gives up after some attempts (@ref quorvel_retries). If a
 *   registration finds it unusable, nothing is retried. In both cases clients have to leave and
 *   register again, as above.
 *
 * @section sensor_death A sensor service that dies
 *
 * @warning The library does not survive the end of the sensor service while a sensor is or was in
 *          use: the platform then frees the objects that it has given to this process. (The service
 *          lives in the system server, whose end restarts the device's user space.)
 *
 * @section sensor_looper The looper
 *
 * A device has one looper per process. A handle with an enabled sensor waits on it in a thread of
 * the library, and any number of handles share it.
 * - A program must not poll the looper itself while a sensor handle exists: it would take events
 *   and wakes away from the library.
 * - A program may have an event queue of its own on the looper, with a callback. A poll thread of
 *   the library then calls that callback. While the callback blocks, every sensor handle waits: for
 *   its events, and in DeinitSensorInfo().
 * @{
 */

/**
 * @brief Receives the reading of the sensor that the client registered for.
 * @param value   the reading, see the table of @ref sensor.
 * @param cookie  as given at registration.
 *
 * Called
 * - once soon after a registration that finds its sensor enabled or enables it, with the last
 *   reading of this handle. That is 0 while there is none, and may be old if the sensor was
 *   disabled meanwhile. A client that waited for a late service gets no such call.
 * - whenever the sensor has reported, also when the reading is the same. Several reports may become
 *   one call, see @ref quorvel_changes.
 *
 * @note Threads: see @ref quorvel_callbacks.
 */
typedef void (*SensorCallbackFunc)(int value, void* cookie);

/**
 * @brief Makes a sensor object with three worker threads.
 * @param handle  receives the handle, or NULL on failure. An earlier value is overwritten, not
 *                destroyed. If NULL, nothing happens.
 *
 * @note Does not contact the sensor service.
 * @warning Throws if the system cannot create a thread, see @ref quorvel_handles.
 */
void InitSensorInfo(void** handle);

/**
 * @brief Ends all calls to clients, disables the sensors and destroys the object.
 * @param handle  the variable with the handle; NULL afterwards. If it is NULL or holds NULL,
 *                nothing happens.
 *
 * Remaining registrations need not be undone first. After the return no client is called, and
 * cookies may be freed.
 *
 * @note Blocks until each of these that applies is over:
 *       - callbacks that are running;
 *       - an attempt to connect that is under way;
 *       - the calls that disable sensors and end the event queue.
 * @warning See @ref quorvel_threads for what must not run concurrently.
 */
void DeinitSensorInfo(void** handle);

/**
 * @brief Writes the state of both sensors and their clients to a descriptor.
 * @param handle  a sensor handle. If NULL, nothing is written.
 * @param fd      an open file descriptor; it stays open.
 *
 * @note Never waits for the library or the service, see @ref quorvel_dumps. The parts of the text
 *       may be from different moments.
 */
void DumpSensorInfo(void* handle, int fd);

/**
 * @brief Registers `callback` for the proximity sensor.
 * @param handle    a sensor handle.
 * @param id        identifies the registration: any number that no other client of this sensor uses
 *                  on this handle.
 * @param callback  the function to call; several clients may share one.
 * @param cookie    passed to every call; not NULL. For its lifetime see @ref quorvel_cookies.
 *
 * The client is registered only if the result is 0.
 *
 * @retval 0        registered, also while the service is late (@ref sensor_late).
 * @retval -EINVAL  an argument is NULL, `id` is registered for this sensor already, or the sensor
 *                  is still enabled without a client (see DeregisterProximitySensorCallback()).
 * @retval -ENOSYS  the device has no such sensor. A handle looks a sensor up once: the result of a
 *                  failed look-up is kept, too.
 * @retval other    the platform's result of enabling the sensor.
 * @note The first client of a sensor blocks for the sensor service:
 *       - one call that enables the sensor;
 *       - one call that looks the sensor up, at the handle's first use of that sensor;
 *       - the look-ups of the service and its manager and the call that makes an event queue, at
 *         the first sensor of the handle.
 *
 *       Further clients cost no call.
 * @warning The look-up of the manager returns at once while the service runs, but waits without
 *          limit if the service vanishes after it was found. The whole handle waits then.
 */
int RegisterProximitySensorCallback(void* handle, int id, SensorCallbackFunc callback,
                                    void* cookie);

/**
 * @brief Deregisters the client `id` of the proximity sensor.
 * @param handle  a sensor handle.
 * @param id      as registered.
 *
 * A client that was registered no longer is, whatever the result. The last client's leaving
 * disables the sensor, and the result tells how that went. If the platform refuses to disable the
 * sensor, the sensor stays enabled, and this handle takes no client for it any more.
 *
 * @retval 0        deregistered; if it was the last client, the sensor is disabled.
 * @retval -EINVAL  `handle` is NULL, `id` is not registered, or this was the last client of a
 *                  sensor that could not be enabled when the service came up.
 * @retval -ENOSYS  this was the last client of a sensor that was never found.
 * @retval other    the platform's result of disabling the sensor.
 * @note May be called from inside a callback.
 * @note The last client of a sensor blocks for the service's answer.
 * @warning A call already under way may arrive after the return, see @ref quorvel_cookies.
 */
int DeregisterProximitySensorCallback(void* handle, int id);

/**
 * @brief Registers `callback` for the hinge angle sensor.
 * @param handle    a sensor handle.
 * @param id        identifies the registration: any number that no other client of this sensor uses
 *                  on this handle.
 * @param callback  the function to call; several clients may share one.
 * @param cookie    passed to every call; not NULL. For its lifetime see @ref quorvel_cookies.
 *
 * The client is registered only if the result is 0.
 *
 * @retval 0        registered, also while the service is late (@ref sensor_late).
 * @retval -EINVAL  an argument is NULL, `id` is registered for this sensor already, or the sensor
 *                  is still enabled without a client.
 * @retval -ENOSYS  the device has no such sensor.
 * @retval other    the platform's result of enabling the sensor.
 * @note Look-ups and blocking: as RegisterProximitySensorCallback().
 * @warning As RegisterProximitySensorCallback(): it may wait without limit if the service vanishes.
 */
int RegisterHingeAngleSensorCallback(void* handle, int id, SensorCallbackFunc callback,
                                     void* cookie);

/**
 * @brief Deregisters the client `id` of the hinge angle sensor.
 * @param handle  a sensor handle.
 * @param id      as registered.
 *
 * What the last client's leaving does, and a refusal: as DeregisterProximitySensorCallback().
 *
 * @retval 0        deregistered; if it was the last client, the sensor is disabled.
 * @retval -EINVAL  `handle` is NULL, `id` is not registered, or this was the last client of a
 *                  sensor that could not be enabled when the service came up.
 * @retval -ENOSYS  this was the last client of a sensor that was never found.
 * @retval other    the platform's result of disabling the sensor.
 * @note Threads and blocking: as DeregisterProximitySensorCallback().
 * @warning A call already under way may arrive after the return, see @ref quorvel_cookies.
 */
int DeregisterHingeAngleSensorCallback(void* handle, int id);

/** @} */

/**
 * @defgroup thermal Temperatures, throttling and battery charge limits
 * @brief Taken from the platform's thermal service, AIDL or HIDL.
 *
 * The service is the AIDL one (instance "default") if the device declares it and it runs, otherwise
 * the HIDL one, version 2.0. Names of temperatures are the device maker's, compared exactly.
 *
 * @section thermal_link The connection to the thermal service
 *
 * - The first call that needs the service makes the connection, and so does every later one while
 *   there is none. Such a call does not wait for a service that does not run.
 * - The library uses one service until it dies. After its death both are looked for again, the AIDL
 *   one first.
 * - Whatever reconnects, a call of the program or a background attempt, registers every type that
 *   has clients with the service, once per connection.
 * - After a death the library looks for the service in the background (@ref quorvel_retries).
 *   Clients stay registered. They are not called at the reconnection: they receive the next
 *   throttling change.
 * - After the library has given up, clients are not called until the next call that contacts the
 *   service (a query that is not cached, a registration, a deregistration) finds one. That brings
 *   all clients back.
 *
 * @section thermal_late Registrations without a service
 *
 * - While no service can be reached, registrations succeed and wait. The library looks for the
 *   service (@ref quorvel_retries) and, when it finds it, registers all that wait, once.
 * - A registration that fails then, for example for a name that the service does not know, is
 *   dropped with only a line in the log.
 * - When all these attempts have failed, registrations keep waiting. A further registration with
 *   another id, while the service is still away, starts as many again. The slow attempts after a
 *   death register what waits, too. Other calls that find the service do not.
 *
 * @section thermal_refusal A type that the service refuses
 *
 * A service that refuses to register a type is not asked again on the same connection, unless all
 * clients of the type leave and a first one registers again. The refusal is logged. Until then the
 * clients of the type receive what they, and later clients of the same temperature, are told at
 * registration, and nothing more.
 * @{
 */

/**
 * @brief The types of temperatures, as GetThermalTypeByName() returns them.
 *
 * RegisterThermalCallback() takes them by name: "CPU" for #QUORVEL_THERMAL_TYPE_CPU and so on. BCL
 * stands for battery charge limit: the severities of these types say how near the battery is to a
 * voltage or current at which the device would switch off.
 */
enum {
  QUORVEL_THERMAL_TYPE_UNKNOWN = -1,        /**< no type has this name */
  QUORVEL_THERMAL_TYPE_CPU = 0,             /**< "CPU" */
  QUORVEL_THERMAL_TYPE_GPU = 1,             /**< "GPU" */
  QUORVEL_THERMAL_TYPE_BATTERY = 2,         /**< "BATTERY" */
  QUORVEL_THERMAL_TYPE_SKIN = 3,            /**< "SKIN" */
  QUORVEL_THERMAL_TYPE_USB_PORT = 4,        /**< "USB_PORT" */
  QUORVEL_THERMAL_TYPE_POWER_AMPLIFIER = 5, /**< "POWER_AMPLIFIER" */
  QUORVEL_THERMAL_TYPE_BCL_VOLTAGE = 6,     /**< "BCL_VOLTAGE" */
  QUORVEL_THERMAL_TYPE_BCL_CURRENT = 7,     /**< "BCL_CURRENT" */
  QUORVEL_THERMAL_TYPE_BCL_PERCENTAGE = 8,  /**< "BCL_PERCENTAGE" */
  QUORVEL_THERMAL_TYPE_NPU = 9              /**< "NPU" */
};

/** @brief The throttling severities, from the least to the most severe. */
enum {
  QUORVEL_THROTTLING_NONE = 0,      /**< "NONE": the device does nothing */
  QUORVEL_THROTTLING_LIGHT = 1,     /**< "LIGHT": throttles, and the user does not notice */
  QUORVEL_THROTTLING_MODERATE = 2,  /**< "MODERATE": throttles noticeably, but not much */
  QUORVEL_THROTTLING_SEVERE = 3,    /**< "SEVERE": throttles so that its use suffers */
  QUORVEL_THROTTLING_CRITICAL = 4,  /**< "CRITICAL": has done all it can to cool down */
  QUORVEL_THROTTLING_EMERGENCY = 5, /**< "EMERGENCY": shuts parts of itself down */
  QUORVEL_THROTTLING_SHUTDOWN = 6   /**< "SHUTDOWN": is about to switch itself off */
};

/**
 * @brief Receives the throttling severity of the temperature that the client registered for.
 * @param severity  #QUORVEL_THROTTLING_NONE (0) to #QUORVEL_THROTTLING_SHUTDOWN (6); passed on as
 *                  reported, not checked.
 * @param cookie    as given at registration.
 *
 * Called
 * - once soon after a registration, with the severity of that moment. The other clients of the same
 *   temperature are called again then, too.
 * - whenever the service reports the temperature.
 *
 * @note Clients of one type are called one at a time, those of different types concurrently. One
 *       exception: if a callback is still running when the last client of its type leaves, as one
 *       that deregisters itself is, clients that register for the type from then on may be called
 *       concurrently with it.
 * @note It may call every function of this family except DeinitThermalInfo(), also for its own
 *       client.
 * @warning If several changes arrive before a client is called, the client receives only the
 *          **oldest** one, see @ref quorvel_changes.
 */
typedef void (*ThermalCallbackFunc)(int severity, void* cookie);

/** @brief A client of RegisterThermalCallback(). The texts are copied. */
typedef struct ThermalCallbackParam {
  int id;                       /**< identifies the registration, see RegisterThermalCallback() */
  const char* type_name;        /**< a type of temperature by its name, such as "SKIN" */
  const char* temperature_name; /**< a temperature of that type by the device maker's name */
  ThermalCallbackFunc callback; /**< the function to call; several clients may share one */
} ThermalCallbackParam;

/** @brief Bytes in the name of a thermistor, including the terminator. */
#define QUORVEL_THERMISTOR_NAME_SIZE 64

/** @brief One reading of GetBulkTemperatureByNames(). */
typedef struct thermistor {
  char name[QUORVEL_THERMISTOR_NAME_SIZE]; /**< truncated to 63 bytes; padded with zeros */
  float value;                             /**< as reported, not checked: degrees Celsius; mV,
                                                mA or percent for the BCL types; NaN from some
                                                services for one that cannot be read */
} thermistor;

/**
 * @brief Makes a thermal object with two worker threads.
 * @param handle  receives the handle, or NULL on failure. An earlier value is overwritten, not
 *                destroyed. If NULL, nothing happens.
 *
 * @note Does not contact the thermal service.
 * @warning Throws if the system cannot create a thread, see @ref quorvel_handles.
 */
void InitThermalInfo(void** handle);

/**
 * @brief Ends all calls to clients, leaves the thermal service and destroys the object.
 * @param handle  the variable with the handle; NULL afterwards. If it is NULL or holds NULL,
 *                nothing happens.
 *
 * Remaining registrations need not be undone first. A registration that a callback makes meanwhile
 * is refused. After the return no client is called, and cookies may be freed.
 *
 * @note Blocks until each of these that applies is over:
 *       - callbacks that are running;
 *       - an attempt to connect that is under way;
 *       - the calls that end the registrations at the service.
 * @warning See @ref quorvel_threads for what must not run concurrently.
 */
void DeinitThermalInfo(void** handle);

/**
 * @brief Writes the battery charge limits last read and the clients to a descriptor.
 * @param handle  a thermal handle. If NULL, nothing is written.
 * @param fd      an open file descriptor; it stays open.
 *
 * @note Waits while the handle waits for the service, then writes with no lock held, see
 *       @ref quorvel_dumps.
 */
void DumpThermalInfo(void* handle, int fd);

/**
 * @brief Reads the severities of the battery's current limits.
 * @param handle      a thermal handle.
 * @param values      receives the severities, in the service's order.
 * @param size        on entry the room in `values`, on success the number of severities. A negative
 *                    number counts as enough room.
 * @param use_cached  true: as of the last query, of current or voltage. false: asks the service for
 *                    both first. If no service can be reached, the result of the last query stays;
 *                    if the call to the service fails, there are none.
 *
 * The limits are the temperatures of the type BCL_CURRENT whose names contain "AUDIO".
 *
 * @retval 0        read, also if there are none.
 * @retval -EINVAL  a pointer is NULL, or there is not enough room. Nothing is written.
 * @note Blocks also with use_cached true while the handle waits for the service, see
 *       @ref quorvel_blocking.
 */
int GetBatteryChargeLimitCurrent(void* handle, int* values, int* size, bool use_cached);

/**
 * @brief Reads the severities of the battery's voltage limits.
 * @param handle      a thermal handle.
 * @param values      receives the severities, in the service's order.
 * @param size        on entry the room in `values`, on success the number of severities. A negative
 *                    number counts as enough room.
 * @param use_cached  true: as of the last query, of current or voltage. false: asks the service for
 *                    both first; failures as for GetBatteryChargeLimitCurrent().
 *
 * The limits are the temperatures of the type BCL_VOLTAGE whose names contain "AUDIO".
 *
 * @retval 0        read, also if there are none.
 * @retval -EINVAL  a pointer is NULL, or there is not enough room. Nothing is written.
 * @note Blocking: as GetBatteryChargeLimitCurrent().
 */
int GetBatteryChargeLimitVoltage(void* handle, int* values, int* size, bool use_cached);

/**
 * @brief Returns how much room for charge limits is usually enough; not a bound.
 * @param handle  a thermal handle.
 *
 * @retval 16       the number of severities.
 * @retval -EINVAL  `handle` is NULL.
 */
int GetBatteryChargeLimitCapacity(void* handle);

/**
 * @brief Registers a client for the throttling severity of one temperature.
 * @param handle  a thermal handle.
 * @param param   the client. The id may be any number that no other client of this type uses on
 *                this handle. Use an id for one type only if it is to be deregistered, see
 *                DeregisterThermalCallback().
 * @param cookie  passed to every call; not NULL. For its lifetime see @ref quorvel_cookies.
 *
 * @retval 0        registered; or waiting, if no service can be reached (@ref thermal_late). An id
 *                  that waits already keeps what it waits for.
 * @retval -EINVAL
 *         - a pointer is NULL;
 *         - `id` is registered for this type already;
 *         - the service does not report a temperature of that type and name;
 *         - the service does not answer, like one that died a moment ago: worth a retry;
 *         - DeinitThermalInfo() has begun.
 * @note Blocks for the service, see @ref quorvel_blocking.
 * @warning Each type with clients has a worker thread, made by the first registration. If the
 *          system cannot create it, std::system_error reaches the caller and the handle must not be
 *          used any more. In a C program, and for a registration that waited, that ends the
 *          process.
 */
int RegisterThermalCallback(void* handle, const ThermalCallbackParam* param, void* cookie);

/**
 * @brief Deregisters the client `id`.
 * @param handle  a thermal handle.
 * @param id      as registered. If several types use it, the client of the type that has had
 *                clients for the longest is deregistered.
 *
 * @retval 0        deregistered; or no service can be reached, see below.
 * @retval -EINVAL  `handle` is NULL, or `id` is not registered. While a service can be reached, a
 *                  registration that waits is not found.
 * @note May be called from inside a callback.
 * @note The last client of a type blocks for the service's answer and until a callback of that type
 *       that is running has returned. On a worker thread of the library, that is inside a callback,
 *       it does not wait for callbacks.
 * @warning While no service can be reached, this takes back a registration that waits and leaves
 *          the others as they are. The result is 0 in any case. For a client that had been
 *          registered with the service, repeat the call once the service is back.
 * @warning A call already under way may arrive after the return, see @ref quorvel_cookies.
 */
int DeregisterThermalCallback(void* handle, int id);

/**
 * @brief Returns the number of a type of temperatures.
 * @param handle  a thermal handle.
 * @param name    the name of the type in capitals, such as "SKIN".
 *
 * @retval 0..9                          #QUORVEL_THERMAL_TYPE_CPU to #QUORVEL_THERMAL_TYPE_NPU.
 * @retval QUORVEL_THERMAL_TYPE_UNKNOWN  -1: no type has this name.
 * @retval -EINVAL                       an argument is NULL.
 * @note Asks no service.
 */
int GetThermalTypeByName(void* handle, const char* name);

/**
 * @brief Returns the number of a throttling severity.
 * @param handle  a thermal handle.
 * @param name    the name of the severity in capitals, such as "SEVERE".
 *
 * @retval 0..6     #QUORVEL_THROTTLING_NONE to #QUORVEL_THROTTLING_SHUTDOWN.
 * @retval -EINVAL  an argument is NULL, or no severity has this name.
 * @note Asks no service.
 */
int GetThrottlingSeverityByName(void* handle, const char* name);

/**
 * @brief Reads any number of temperatures, of any types, with one call to the service.
 * @param handle     a thermal handle.
 * @param names      the device maker's names. If several temperatures have one name, the service's
 *                   first is read.
 * @param count      the number of names, 1 or more.
 * @param out        receives the readings, sorted by name byte by byte, each once. A name that the
 *                   service does not report is left out.
 * @param out_count  on entry the room in `out`, 1 or more; on success the number of readings.
 *
 * @retval 0        read, also if there are none or no service can be reached.
 * @retval -EINVAL  a pointer or a name is NULL, there is no name or no room, or the room is too
 *                  small. Nothing is written.
 * @note Blocks for the service, see @ref quorvel_blocking.
 * @warning A negative `count` ends the process.
 */
int GetBulkTemperatureByNames(void* handle, const char** names, int count, thermistor* out,
                              int* out_count);

/** @} */

/* The records as the platform's modules pass them on; the pointers of 64-bit systems. */
#ifdef __cplusplus
#define QUORVEL_ASSERT(condition) static_assert(condition, #condition)
#else
#define QUORVEL_ASSERT(condition) _Static_assert(condition, #condition)
#endif
QUORVEL_ASSERT(sizeof(thermistor) == 68);
QUORVEL_ASSERT(offsetof(thermistor, name) == 0);
QUORVEL_ASSERT(offsetof(thermistor, value) == 64);
#if defined(__LP64__)
QUORVEL_ASSERT(sizeof(ThermalCallbackParam) == 32);
QUORVEL_ASSERT(offsetof(ThermalCallbackParam, id) == 0);
QUORVEL_ASSERT(offsetof(ThermalCallbackParam, type_name) == 8);
QUORVEL_ASSERT(offsetof(ThermalCallbackParam, temperature_name) == 16);
QUORVEL_ASSERT(offsetof(ThermalCallbackParam, callback) == 24);
#endif
#undef QUORVEL_ASSERT

#ifdef __cplusplus
}
#endif

#endif /* QUORVEL_H */
