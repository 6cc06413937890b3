/* Asks for the battery's values once, listens for SECONDS (default 0), and dumps the state.
 *
 * On a phone it hears the phone. On a host no service runs unless the program brings one: the
 * library says so, and the program shows how that looks to a client.
 */
#include <android/binder_process.h>
#include <errno.h>
#include <quorvel.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

/* On a thread of the library. */
static void OnLevel(int percent, void* cookie) {
  (void)cookie;
  printf("battery level: %d %%\n", percent);
}

static void Show(const char* what, int value) {
  if (value == -EAGAIN) {
    printf("%s: the health service cannot be asked\n", what);
  } else if (value < 0) {
    printf("%s: unknown\n", what);
  } else {
    printf("%s: %d\n", what, value);
  }
}

int main(int argc, char** argv) {
  const unsigned seconds = argc > 1 ? (unsigned)strtoul(argv[1], NULL, 10) : 0;
  /* Reports and deaths arrive on these threads. */
  ABinderProcess_startThreadPool();

  void* battery = NULL;
  InitBatteryInfo(&battery);
  if (battery == NULL) return EXIT_FAILURE;
  Show("battery level", GetBatteryLevel(battery, false));
  Show("battery cycles", GetBatteryCycleCount(battery, false));
  /* 0 is online: see quorvel.h. */
  Show("dock charger, 0 while online", GetDockChargerIsOnline(battery, false));

  /* A service that comes up within two seconds is found; see quorvel.h for later ones. */
  if (RegisterBatteryLevelCallback(battery, OnLevel, NULL) != 0) return EXIT_FAILURE;
  sleep(seconds);
  fflush(stdout);
  DumpBatteryInfo(battery, STDOUT_FILENO);
  DeinitBatteryInfo(&battery);
  return EXIT_SUCCESS;
}
