/**
 * @file quorvel.h
 * What an audio stack needs to know of the device it runs on, as plain C functions.
 *
 * C11 and C++. Include nothing else.
 *
 * Handles. Each family has an object behind an opaque handle: Init...() makes it, every other
 * function of the family takes it, Deinit...() destroys it. Any number of handles may exist side
 * by side; each has its own threads and its own link to the platform's service.
 *
 * Results. 0, or a negated errno number; each function lists its own. A NULL handle is refused
 * with -EINVAL, or ignored by functions without a result.
 *
 * Threads. Functions may be called from any thread, several at a time, from inside callbacks too,
 * with one exception: Deinit...() must not run beside any other call on the same handle, except
 * those that the handle's own callbacks make, and must not be called from a callback of that handle
 * (it waits for callbacks to end).
 *
 * Callbacks run on a worker thread of the library, one at a time per handle and family (thermal:
 * see ThermalCallbackFunc), with no lock of the library held. A callback that takes long delays the
 * clients that share its thread, and no others. No function calls back on its caller's thread.
 *
 * Dumps. A Dump...() function composes its text first and then writes it, with no lock held. While
 * the descriptor takes nothing, as a full pipe, only the caller waits. An error ends the dump; a
 * reader that has gone does not end the process by SIGPIPE.
 *
 * Process. The platform delivers through its binder threads, which the program has to have
 * started (ABinderProcess_startThreadPool() and the like): without them no report and no death of
 * the health service or an AIDL thermal service is ever heard of, and their clients are never
 * called. (For a HIDL thermal service and for sensors the platform starts a thread where there is
 * none.) The library stays mapped when it is unloaded with dlclose(), since the platform may still
 * hold objects of it.
 *
 * The services run in other processes. One in the same process would be called, and would call
 * back, on the caller's thread: a thermal service that notifies inside a query deadlocks, and so
 * does a health service that reports inside a call.
 */
#ifndef QUORVEL_H
#define QUORVEL_H

#include <stdbool.h>
#include <stddef.h>

/**
 * @name Version
 * Of this header, by the rules of semantic versioning: what is built against one version runs with
 * every later one of the same major number. The library's file name carries that number.
 * @{
 */
/** Raised by a change that breaks callers. */
#define QUORVEL_VERSION_MAJOR 1
/** Raised by something new. */
#define QUORVEL_VERSION_MINOR 0
/** Raised by what is mended. */
#define QUORVEL_VERSION_PATCH 0
/** @} */

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup battery Battery and chargers
 *
 * Four properties, taken from the platform's health service (AIDL health, instance "default"):
 *
 * | property                | value                                                         |
 * |-------------------------|---------------------------------------------------------------|
 * | battery level           | percent, 0 to 100 as the service reports it                   |
 * | battery cycle count     | full charge cycles so far                                     |
 * | wireless charger online | **0 while it is online, 1 while it is not**                   |
 * | dock charger online     | **0 while it is online, 1 while it is not**                   |
 *
 * Each is -1 until the first report has arrived. Values are passed on as reported, not checked.
 *
 * The link to the service. The first client of any property makes the link, the last one to leave
 * ends it. (Attempts to link that are under way when the last one leaves go on; the link that they
 * make stays for the next client.) A new link brings a report at once, so clients hear the first
 * values without asking; a value that is known already and that the report only repeats causes no
 * call (see BatteryInfoCallback).
 *
 * When the service dies, values stay as they are and the library links again in the background:
 * ten attempts, 200 ms apart. (An attempt takes up to five seconds longer while the device
 * declares a service that does not run, because the platform's look-up waits for it.) The same
 * happens when the first client finds no service. A first client or a death that comes while such
 * attempts are under way joins them and gets what is left of the ten; in the pause after the tenth,
 * one more attempt. When the link is back the service reports, and clients hear whatever has
 * changed.
 *
 * When all ten attempts have failed the library gives up: the clients stay registered but hear
 * nothing, cached values grow old, and registering further clients changes nothing. What brings
 * the link back is a first client: deregister all clients of all four properties, then register
 * again (or call BatteryInfo::ReconnectToHealthService(), for C++ callers with that class).
 *
 * What may block. A handle talks to the service with its lock held, so while it waits for the
 * service, its background attempts included, everything else on the same handle waits as well:
 * registrations, deregistrations, fresh queries, Deinit...(), and calls to clients that have not
 * begun. Cached values never wait; dumps wait for their reader only. Other handles do not wait,
 * with one exception: the platform notifies the handles of a death one after another, so a handle
 * that waits delays the notice to the next one. A look-up takes up to five seconds while the device
 * declares a service that does not run; a call to the service takes as long as the service does.
 * @{
 */

/**
 * Tells a client the value of the property it registered for.
 * @param value   see the table above.
 * @param cookie  as given at registration.
 *
 * Called when the value has changed, and once soon after a registration that finds a value known
 * (together with the other clients of the same property, which hear it again). The exception is a
 * first client, one that registers while no property has any: it makes the link, and hears from it
 * only what differs from the value known before. After registering a first client, read the cached
 * value where that matters. Not called before a value has arrived. Changes that come faster
 * than clients are called fold into one call with the latest value.
 */
typedef void (*BatteryInfoCallback)(int value, void* cookie);

/**
 * Makes a battery object with its two worker threads. Does not contact the health service.
 * @param handle_out  receives the handle, or NULL on failure; an earlier value is overwritten, not
 *                    destroyed. Nothing happens when NULL.
 *
 * When the system cannot give a thread, std::system_error reaches the caller, *handle_out is left
 * alone, and what had been made by then is lost; in a C program that ends the process.
 */
void InitBatteryInfo(void** handle_out);

/**
 * Ends all calls to clients, leaves the health service and destroys the object. Registrations that
 * are left need not be undone first.
 * @param handle_inout  the variable with the handle; NULL afterwards. Nothing happens when it is
 *                      NULL or holds NULL.
 *
 * Blocks until an attempt to link and a callback that are under way have returned, and for calls to
 * the health service: a look-up unless the service is known, then, while linked, the call that ends
 * the registration there. With a service that the device declares but that does not run, that is
 * five seconds for the attempt and five for the look-up. Afterwards no client is called any more
 * and cookies may go.
 */
void DeinitBatteryInfo(void** handle_inout);

/**
 * Writes the link state, the four values and their numbers of clients to a file descriptor, as
 * text for people. Never waits for the library or the service; what it shows may be of different
 * moments.
 * @param handle  a battery handle; nothing is written when NULL.
 * @param fd      an open descriptor; it stays open.
 */
void DumpBatteryInfo(void* handle, int fd);

/**
 * Reads the battery level.
 * @param handle      a battery handle.
 * @param use_cached  true: the last known value, at once, without asking the service. false: asks
 *                    the service, which may block: for the service's answer, and up to five
 *                    seconds when the device declares a service that does not run. All four cached
 *                    values are refreshed; clients hear of a change found this way together with
 *                    the next change that the service reports, or when a further client registers
 *                    for a property whose value is known.
 * @return percent; -1 while no value is known; -EAGAIN when the service cannot be asked or fails;
 *         -EINVAL when `handle` is NULL.
 */
int GetBatteryLevel(void* handle, bool use_cached);

/**
 * Reads the number of charge cycles. Otherwise as GetBatteryLevel().
 * @param handle      a battery handle.
 * @param use_cached  true: the last known value, at once; false: asks the service.
 * @return full charge cycles; -1, -EAGAIN or -EINVAL as there.
 */
int GetBatteryCycleCount(void* handle, bool use_cached);

/**
 * Reads whether a wireless charger is online. Otherwise as GetBatteryLevel().
 * @param handle      a battery handle.
 * @param use_cached  true: the last known value, at once; false: asks the service.
 * @return 0 while it is online, 1 while it is not; -1, -EAGAIN or -EINVAL as there.
 */
int GetWirelessChargerIsOnline(void* handle, bool use_cached);

/**
 * Reads whether a dock charger is online. Otherwise as GetBatteryLevel().
 * @param handle      a battery handle.
 * @param use_cached  true: the last known value, at once; false: asks the service.
 * @return 0 while it is online, 1 while it is not; -1, -EAGAIN or -EINVAL as there.
 */
int GetDockChargerIsOnline(void* handle, bool use_cached);

/**
 * Has `callback` called with the battery level.
 * @param handle    a battery handle.
 * @param callback  identifies the registration: one function can be registered once per property,
 *                  whatever the cookie.
 * @param cookie    handed back on every call; may be NULL. Keep what it points to until
 *                  DeinitBatteryInfo() has returned, see DeregisterBatteryLevelCallback().
 * @return 0, also while the service is away: the client hears when the link is made again, if that
 *         is before the library gives up (see above). -EINVAL when `handle` or `callback` is NULL,
 *         or `callback` is registered for the level already.
 *
 * The first client of any property makes the link and waits for the service's answer.
 */
int RegisterBatteryLevelCallback(void* handle, BatteryInfoCallback callback, void* cookie);

/**
 * Stops calls to `callback` for the battery level. May be called from inside a callback.
 * @param handle    a battery handle.
 * @param callback  as registered.
 * @return 0; -EINVAL when an argument is NULL or `callback` is not registered for the level.
 *
 * A call that is already on its way may still arrive after this returns: cookies have to live
 * until DeinitBatteryInfo() has returned. The last client of all properties ends the link and
 * waits for the service's answer, or, where none is linked, for a look-up of the service.
 */
int DeregisterBatteryLevelCallback(void* handle, BatteryInfoCallback callback);

/**
 * Has `callback` called with the cycle count; otherwise as RegisterBatteryLevelCallback().
 * @param handle    a battery handle.
 * @param callback  what to call; once per property.
 * @param cookie    handed back on every call.
 * @return 0 or -EINVAL as there.
 */
int RegisterBatteryCycleCountCallback(void* handle, BatteryInfoCallback callback, void* cookie);

/**
 * Stops calls to `callback` for the cycle count; otherwise as DeregisterBatteryLevelCallback().
 * @param handle    a battery handle.
 * @param callback  as registered.
 * @return 0 or -EINVAL as there.
 */
int DeregisterBatteryCycleCountCallback(void* handle, BatteryInfoCallback callback);

/**
 * Has `callback` called with 0 when a wireless charger comes online and 1 when it leaves;
 * otherwise as RegisterBatteryLevelCallback().
 * @param handle    a battery handle.
 * @param callback  what to call; once per property.
 * @param cookie    handed back on every call.
 * @return 0 or -EINVAL as there.
 */
int RegisterWirelessChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback,
                                            void* cookie);

/**
 * Stops calls to `callback` for the wireless charger; otherwise as
 * DeregisterBatteryLevelCallback().
 * @param handle    a battery handle.
 * @param callback  as registered.
 * @return 0 or -EINVAL as there.
 */
int DeregisterWirelessChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback);

/**
 * Has `callback` called with 0 when a dock charger comes online and 1 when it leaves; otherwise as
 * RegisterBatteryLevelCallback().
 * @param handle    a battery handle.
 * @param callback  what to call; once per property.
 * @param cookie    handed back on every call.
 * @return 0 or -EINVAL as there.
 */
int RegisterDockChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback, void* cookie);

/**
 * Stops calls to `callback` for the dock charger; otherwise as DeregisterBatteryLevelCallback().
 * @param handle    a battery handle.
 * @param callback  as registered.
 * @return 0 or -EINVAL as there.
 */
int DeregisterDockChargerIsOnlineCallback(void* handle, BatteryInfoCallback callback);

/** @} */

/**
 * @defgroup sensor Proximity and hinge angle
 *
 * Two sensors, taken from the platform's sensor service:
 *
 * | sensor      | value                                                                        |
 * |-------------|------------------------------------------------------------------------------|
 * | proximity   | distance in centimetres; many sensors know two values only, near (0) and far |
 * | hinge angle | angle between the halves of a folding device in degrees, 0 when it is closed |
 *
 * Readings are whole numbers, cut off towards zero: 4.9 cm is 4, -0.5 degrees is 0. One that no int
 * can hold becomes the nearest int, one that is no number 0. Each is 0 until the sensor has
 * reported for the first time.
 *
 * The first client of a sensor enables it, at the sensor's fastest rate and without batching; the
 * last one to leave disables it.
 *
 * A service that is late. While the sensor service does not run yet, registrations succeed and
 * wait, and the library looks for the service once a second for as long as that takes. Then it
 * enables the sensors that are waited for. Their clients are not called at once: the first call is
 * for the sensor's next event. A sensor that turns out not to exist, or that the service refuses,
 * is given up: its clients stay registered and hear nothing until all of them have left and a first
 * client registers again. A service that runs but cannot be used (no sensor manager, looper or
 * event queue) is a rarer case: when it was missing before, the library gives up once it has made
 * ten attempts in all; when a registration meets it so, nothing is tried again. In both cases
 * clients have to leave and register again, as above.
 *
 * A service that dies. **The library does not survive the end of the sensor service while a sensor
 * is or was in use**: the platform then frees the objects that it has given to this process. (The
 * service lives in the system server, whose end restarts the device's user space.)
 *
 * The looper. A device has one looper per process, and a handle with an enabled sensor waits on it
 * in a thread of the library. Any number of handles share it. A program that polls the looper
 * itself takes news and wakes away from the library: it must not do so while a sensor handle
 * exists. A program may have an event queue of its own on the looper, with a callback. A poll
 * thread of the library then calls that callback, and while the callback blocks, every sensor
 * handle waits: for its events, and in DeinitSensorInfo().
 *
 * What may block. A handle talks to the platform with its lock held, so while it waits, everything
 * else on the same handle waits as well: registrations, deregistrations, calls to clients that have
 * not begun, Deinit...(). Dumps wait for their reader only. Other handles do not wait.
 * @{
 */

/**
 * Tells a client the reading of the sensor it registered for.
 * @param value   see the table above.
 * @param cookie  as given at registration.
 *
 * Called once soon after a registration that finds its sensor enabled or enables it, with the last
 * reading of this handle, which is 0 while there is none and may be from long ago when the sensor
 * was disabled meanwhile; and then whenever the sensor has reported, also when the reading is the
 * same. A client that has waited for a late service gets the second kind of call only. Reports that
 * come faster than clients are called fold into one call with the latest reading.
 */
typedef void (*SensorCallbackFunc)(int value, void* cookie);

/**
 * Makes a sensor object with its three worker threads. Does not contact the sensor service.
 * @param handle  receives the handle, or NULL on failure; an earlier value is overwritten, not
 *                destroyed. Nothing happens when NULL.
 *
 * When the system cannot give a thread, std::system_error reaches the caller, *handle is left
 * alone, and what had been made by then is lost; in a C program that ends the process.
 */
void InitSensorInfo(void** handle);

/**
 * Ends all calls to clients, disables the sensors and destroys the object. Registrations that are
 * left need not be undone first.
 * @param handle  the variable with the handle; NULL afterwards. Nothing happens when it is NULL or
 *                holds NULL.
 *
 * Blocks until callbacks and an attempt to connect that are under way have returned, and for the
 * calls that disable sensors and end the event queue. Afterwards no client is called any more and
 * cookies may go.
 */
void DeinitSensorInfo(void** handle);

/**
 * Writes the state of both sensors and their clients to a file descriptor, as text for people.
 * Never waits for the library or the service; what it shows may be of different moments.
 * @param handle  a sensor handle; nothing is written when NULL.
 * @param fd      an open descriptor; it stays open.
 */
void DumpSensorInfo(void* handle, int fd);

/**
 * Has `callback` called with the proximity reading.
 * @param handle    a sensor handle.
 * @param id        identifies the registration: any number that no other client of this sensor uses
 *                  on this handle.
 * @param callback  what to call; several clients may have the same.
 * @param cookie    handed back on every call; not NULL. Keep what it points to until
 *                  DeinitSensorInfo() has returned, see DeregisterProximitySensorCallback().
 * @return 0, also while the service is late (see above). -EINVAL when an argument is NULL, when
 *         `id` is registered for this sensor already, or when the sensor is still enabled without a
 *         client (see DeregisterProximitySensorCallback()). -ENOSYS when the device has no such
 *         sensor; a handle asks once, so that also a question that failed stays answered. Any other
 *         value is what the platform answered to enabling the sensor. The client is registered only
 *         when 0 is returned.
 *
 * What it costs. The first client of a sensor waits for the sensor service: one call to enable the
 * sensor, one more to look it up when it is the handle's first use of that sensor, and for the
 * first sensor of the handle the look-ups of service and manager and the call that makes an event
 * queue. The look-up of the manager returns at once while the service runs, but waits without limit
 * should the service vanish between being found and being asked; also then everything else on the
 * handle waits. Further clients cost no call.
 */
int RegisterProximitySensorCallback(void* handle, int id, SensorCallbackFunc callback,
                                    void* cookie);

/**
 * Stops calls to the client `id` of the proximity sensor. May be called from inside a callback.
 * @param handle  a sensor handle.
 * @param id      as registered.
 * @return 0; -EINVAL when `handle` is NULL or `id` is not registered. The last client's leaving
 *         disables the sensor, and what becomes of that is the result: -ENOSYS for a sensor that
 *         was never found, -EINVAL for one that could not be enabled when the service came up, and
 *         any other value is what the platform answered. Whatever the result, a client that was
 *         registered no longer is. When the platform refuses to disable the sensor it stays
 *         enabled, and this handle takes no client for it any more.
 *
 * A call that is already on its way may still arrive after this returns: cookies have to live
 * until DeinitSensorInfo() has returned. The last client of a sensor waits for the service's
 * answer.
 */
int DeregisterProximitySensorCallback(void* handle, int id);

/**
 * Has `callback` called with the hinge angle; otherwise as RegisterProximitySensorCallback().
 * @param handle    a sensor handle.
 * @param id        identifies the registration among those of this sensor.
 * @param callback  what to call.
 * @param cookie    handed back on every call; not NULL.
 * @return as there.
 */
int RegisterHingeAngleSensorCallback(void* handle, int id, SensorCallbackFunc callback,
                                     void* cookie);

/**
 * Stops calls to the client `id` of the hinge angle; otherwise as
 * DeregisterProximitySensorCallback().
 * @param handle  a sensor handle.
 * @param id      as registered.
 * @return as there.
 */
int DeregisterHingeAngleSensorCallback(void* handle, int id);

/** @} */

/**
 * @defgroup thermal Temperatures, throttling and battery charge limits
 *
 * Taken from the platform's thermal service: the AIDL one (instance "default") where the device
 * declares it and it runs, otherwise the HIDL one, version 2.0. Names of temperatures are the
 * device maker's, compared exactly.
 *
 * | severity  | value | what the device does                            |
 * |-----------|-------|-------------------------------------------------|
 * | NONE      | 0     | nothing                                         |
 * | LIGHT     | 1     | throttles, and the user does not notice         |
 * | MODERATE  | 2     | throttles noticeably, but not much              |
 * | SEVERE    | 3     | throttles so that the use of it suffers         |
 * | CRITICAL  | 4     | has done all it can to cool down                |
 * | EMERGENCY | 5     | shuts parts of itself down                      |
 * | SHUTDOWN  | 6     | is about to switch itself off                   |
 *
 * The types of temperatures, for RegisterThermalCallback() and GetThermalTypeByName(): CPU 0, GPU
 * 1, BATTERY 2, SKIN 3, USB_PORT 4, POWER_AMPLIFIER 5, BCL_VOLTAGE 6, BCL_CURRENT 7, BCL_PERCENTAGE
 * 8, NPU 9. BCL stands for battery charge limit: the severities of those say how near the battery
 * is to a voltage or current at which the device would switch off.
 *
 * The link to the service is made by the first call that needs it, and by every later one while
 * there is none; such a call does not wait for a service that does not run. Once there is one the
 * library uses it until it dies, whichever it is; after its death both are looked for again, the
 * AIDL one first. Whatever makes the link again, a call of the program or an attempt in the
 * background, registers every type that has clients with the service, once per link.
 *
 * When the service dies the library looks for it in the background: five attempts, 30 ms apart, and
 * if these fail while there are clients, ten more, 1000 ms apart. Clients stay registered, but are
 * not called when the link is back: they hear the next throttling change. When all attempts have
 * failed the library gives up, and clients hear nothing until the next call that contacts the
 * service (a query that is not cached, a registration, a deregistration) finds one and so brings
 * them back.
 *
 * Registrations while no service can be reached succeed and wait. The library looks for the service
 * ten times, 1000 ms apart, and when it finds it registers all that wait, once; what fails then (a
 * name that the service does not know, for one) is dropped, with no more than a line in the log.
 * When all ten attempts have failed they go on waiting, until a further registration with another
 * id while the service is still away starts another ten.
 *
 * A death or a registration that comes while attempts of its kind are under way joins them and gets
 * what is left of the five or ten; in the pause after the last one, one more attempt.
 *
 * When the service refuses to register a type, that is written to the log and not tried again on
 * the same link, unless all clients of the type leave and a first one registers again. Until then
 * the clients of the type hear what they, and later clients of the same temperature, are told at
 * registration, and nothing more.
 *
 * What may block. A handle talks to the service with its lock held, so while it waits for an
 * answer, everything else on the same handle waits as well: registrations, deregistrations,
 * queries, cached values too, dumps, Deinit...(), and while the call concerns a type, calls to its
 * clients that have not begun. Other handles do not wait, with one exception: the platform notifies
 * the handles of a death one after another, so a handle that waits delays the notice to the next
 * one.
 * @{
 */

/**
 * Tells a client the throttling severity of the temperature it registered for.
 * @param severity  see the table above; passed on as reported, not checked.
 * @param cookie    as given at registration.
 *
 * Called once soon after a registration with the severity of that moment, together with the other
 * clients of the same temperature, which hear it again; and then whenever the service reports the
 * temperature. Of reports that come faster than clients are called the **oldest** is told and the
 * others are dropped, also the one for a new client: so what a client has heard last may not be the
 * latest, until the next change.
 *
 * Clients of one type are called one at a time, those of different types at the same time. The
 * exception is a callback that still runs when the last client of its type leaves, as one that
 * deregisters itself does: clients that register for the type from then on may be called beside it.
 *
 * It may call every function of this family but DeinitThermalInfo(), also for its own client.
 */
typedef void (*ThermalCallbackFunc)(int severity, void* cookie);

/** What RegisterThermalCallback() is asked for. The texts are copied. */
typedef struct ThermalCallbackParam {
  int id;                       /**< identifies the registration, see RegisterThermalCallback() */
  const char* type_name;        /**< a type of temperature by its name, such as "SKIN" */
  const char* temperature_name; /**< a temperature of that type by the device maker's name */
  ThermalCallbackFunc callback; /**< what to call; several clients may have the same */
} ThermalCallbackParam;

/** Bytes in the name of a thermistor, the terminator included. */
#define QUORVEL_THERMISTOR_NAME_SIZE 64

/** One reading of GetBulkTemperatureByNames(). */
typedef struct thermistor {
  char name[QUORVEL_THERMISTOR_NAME_SIZE]; /**< cut off after 63 bytes; filled up with zeros */
  float value;                             /**< as the service reports it, not checked: degrees
                                                Celsius; mV, mA or percent for the BCL types; NaN
                                                from some for a thermistor that cannot be read */
} thermistor;

/**
 * Makes a thermal object with its two worker threads. Does not contact the thermal service.
 * @param handle  receives the handle, or NULL on failure; an earlier value is overwritten, not
 *                destroyed. Nothing happens when NULL.
 *
 * When the system cannot give a thread, std::system_error reaches the caller, *handle is left
 * alone, and what had been made by then is lost; in a C program that ends the process.
 */
void InitThermalInfo(void** handle);

/**
 * Ends all calls to clients, leaves the thermal service and destroys the object. Registrations that
 * are left need not be undone first. A registration that a callback makes meanwhile is refused.
 * @param handle  the variable with the handle; NULL afterwards. Nothing happens when it is NULL or
 *                holds NULL.
 *
 * Blocks until callbacks and an attempt to connect that are under way have returned, and for the
 * calls to the service that end the registrations there. Afterwards no client is called any more
 * and cookies may go.
 */
void DeinitThermalInfo(void** handle);

/**
 * Writes the battery charge limits last read and the clients to a file descriptor, as text for
 * people. Waits while the handle waits for the service, then writes with no lock held: a descriptor
 * that blocks, such as a full pipe, delays only the caller. Raises no SIGPIPE.
 * @param handle  a thermal handle; nothing is written when NULL.
 * @param fd      an open descriptor; it stays open.
 */
void DumpThermalInfo(void* handle, int fd);

/**
 * Reads the severities of the battery's current limits, of those temperatures of the type
 * BCL_CURRENT whose names contain "AUDIO".
 * @param handle      a thermal handle.
 * @param values      receives the severities, in the service's order.
 * @param size        on entry how many `values` has room for, on success how many there are now. A
 *                    negative number counts as room enough.
 * @param use_cached  true: as of the last query, of current or voltage. false: asks the service for
 *                    both first; when none can be reached that of the last query stays, and when
 *                    the call to it fails there are none.
 * @return 0, also when there are none; -EINVAL when a pointer is NULL or the room is too small, and
 *         then nothing is written.
 */
int GetBatteryChargeLimitCurrent(void* handle, int* values, int* size, bool use_cached);

/**
 * The same of the battery's voltage limits, the type BCL_VOLTAGE; otherwise as
 * GetBatteryChargeLimitCurrent().
 * @param handle      a thermal handle.
 * @param values      receives the severities, in the service's order.
 * @param size        room on entry, number on success.
 * @param use_cached  true: as of the last query; false: asks the service for both first.
 * @return 0 or -EINVAL as there.
 */
int GetBatteryChargeLimitVoltage(void* handle, int* values, int* size, bool use_cached);

/**
 * Tells how much room for values is enough in the usual case; not a bound.
 * @param handle  a thermal handle.
 * @return 16; -EINVAL when `handle` is NULL.
 */
int GetBatteryChargeLimitCapacity(void* handle);

/**
 * Has a callback called with the throttling severity of one temperature.
 * @param handle  a thermal handle.
 * @param param   what to listen to. The id may be any number that no other client of this type uses
 *                on this handle; use it for one type only if it is to be deregistered, see
 *                DeregisterThermalCallback().
 * @param cookie  handed back on every call; not NULL. Keep what it points to until
 *                DeinitThermalInfo() has returned, see DeregisterThermalCallback().
 * @return 0, also while no service can be reached (see above; an id that waits already keeps
 *         what it waits for). -EINVAL when a pointer is NULL, when `id` is registered for this type
 *         already, when the service does not report a temperature of that type and name, when it
 *         does not answer (as one that has died a moment ago: worth another try), or when
 *         DeinitThermalInfo() has begun.
 *
 * Each type with clients has a worker thread of its own, made by the first registration. When the
 * system cannot give one, std::system_error reaches the caller and the handle cannot be used any
 * more; in a C program, and for a registration that has waited, that ends the process.
 */
int RegisterThermalCallback(void* handle, const ThermalCallbackParam* param, void* cookie);

/**
 * Stops calls to the client `id`. May be called from inside a callback.
 * @param handle  a thermal handle.
 * @param id      as registered.
 * @return 0; -EINVAL when `handle` is NULL or `id` is not registered. An id that several types use
 *         is deregistered from the type that has had clients for the longest.
 *
 * **While no service can be reached** this takes back a registration that waits and leaves the
 * others as they are: the result is 0 whatever there was, and for a client that had been registered
 * with the service the call has to be repeated once it is back. A registration that waits is not
 * found while a service can be reached.
 *
 * A call that is already on its way may still arrive after this returns: cookies have to live
 * until DeinitThermalInfo() has returned. The last client of a type waits for the service's answer
 * and, unless this is called on a worker thread of the library (from a callback, that is), until a
 * callback of that type that is under way has returned.
 */
int DeregisterThermalCallback(void* handle, int id);

/**
 * Gives the number of a type of temperatures. Asks no service.
 * @param handle  a thermal handle.
 * @param name    as in the list above, in capitals.
 * @return 0 to 9; -1 for another name; -EINVAL when an argument is NULL.
 */
int GetThermalTypeByName(void* handle, const char* name);

/**
 * Gives the number of a severity. Asks no service.
 * @param handle  a thermal handle.
 * @param name    as in the table above, in capitals.
 * @return 0 to 6; -EINVAL for another name or when an argument is NULL.
 */
int GetThrottlingSeverityByName(void* handle, const char* name);

/**
 * Reads any number of temperatures, of whatever types, with one call to the service.
 * @param handle     a thermal handle.
 * @param names      the device maker's names; of several temperatures with one name the service's
 *                   first is read.
 * @param count      how many names; **a negative number ends the process**.
 * @param out        receives the readings, sorted by name byte by byte, each once. A name that the
 *                   service does not report is left out.
 * @param out_count  on entry how many `out` has room for, on success how many there are now.
 * @return 0, also when there are none or no service can be reached; -EINVAL when a pointer or a
 *         name is NULL, when there is no name or no room, or when the room is too small; then
 *         nothing is written.
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
