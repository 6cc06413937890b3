/* SPDX-FileCopyrightText: 2026 The quorvel developers
 * SPDX-License-Identifier: Apache-2.0
 */

/* Waits for a battery level, for at most SECONDS (default 0), then queries the battery and writes a
 * dump.
 *
 * On a phone it uses the phone's health service. On a host no service runs unless the program
 * brings one: "client" shows that case, "client_and_phone" has a simulated phone (phone.cc), and
 * "client_and_machine" the battery of this Linux machine (machine.cc).
 */
#include <android/binder_process.h>
#include <errno.h>
#include <quorvel.h>
#include <semaphore.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

static sem_t called;

/* Runs on a worker thread of the library. */
static void OnLevel(int percent, void* cookie) {
  (void)cookie;
  printf("battery level: %d %%\n", percent);
  sem_post(&called);
}

static void Show(const char* what, int value) {
  if (value == -EAGAIN) {
    printf("%s: the health service cannot be asked\n", what);
  } else if (value == QUORVEL_BATTERY_UNKNOWN) {
    printf("%s: unknown\n", what);
  } else {
    printf("%s: %d\n", what, value);
  }
}

static void ShowCharger(const char* what, int value) {
  switch (value) {
    case QUORVEL_CHARGER_ONLINE:
      printf("%s: online\n", what);
      break;
    case QUORVEL_CHARGER_OFFLINE:
      printf("%s: offline\n", what);
      break;
    default:
      Show(what, value);
  }
}

static void Listen(unsigned seconds) {
  struct timespec end;
  clock_gettime(CLOCK_REALTIME, &end);
  end.tv_sec += seconds;
  while (sem_timedwait(&called, &end) != 0 && errno == EINTR) {
  }
}

int main(int argc, char** argv) {
  const unsigned seconds = argc > 1 ? (unsigned)strtoul(argv[1], NULL, 10) : 0;
  sem_init(&called, /*pshared=*/0, /*value=*/0);
  /* The binder threads deliver reports and deaths. */
  ABinderProcess_startThreadPool();

  void* battery = NULL;
  InitBatteryInfo(&battery);
  if (battery == NULL) return EXIT_FAILURE;
  /* Register before the first query: BatteryInfoCallback in quorvel.h says why. */
  if (RegisterBatteryLevelCallback(battery, OnLevel, NULL) != 0) return EXIT_FAILURE;
  Listen(seconds);

  Show("battery level", GetBatteryLevel(battery, false));
  Show("battery cycles", GetBatteryCycleCount(battery, false));
  ShowCharger("dock charger", GetDockChargerIsOnline(battery, false));
  fflush(stdout);
  DumpBatteryInfo(battery, STDOUT_FILENO);
  DeinitBatteryInfo(&battery);
  return EXIT_SUCCESS;
}
