// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

/*
 * The protocol of src/common/repeated_thread.{h,cc}: one worker, two threads that call Start(), one that
 * may call RequestExit(), and the owner, which may call Deinitialize(). The action succeeds or fails,
 * asks for its own next run and asks its own thread to end, as it likes.
 *
 * `tests/model/check` runs it. Each block names the function it stands for and goes step by step as that
 * does. Variables carry the members' names without the underscore. What begins with `due_` is no
 * part of the code: it says in other words what has to happen, and assertions compare the two.
 *
 * Each FAULT_... breaks one line of the protocol. `tests/model/check` builds the model with every one of
 * them in turn, and fails when a fault is not found.
 *
 * An `atomic` stands for what the code does in one hold of lock_, or for one atomic exchange. It may,
 * since the compiler checks that nothing touches another member of RepeatedThread without lock_.
 *
 * Simpler than the code: the number of calls is bounded, and no thread starves at the lock;
 * `repeat_count` is 0, 1 or 2; a pause may last for ever.
 */

#ifndef STARTS
#define STARTS 2          /* calls of Start() by each of the two threads, at most */
#endif
#define OWN_STARTS 1      /* by the action, at most */
#define SPURIOUS_WAKES 1  /* of the condition variable, at most */

#define IDLE 0
#define TRIGGERED 1

/* The members. */
bool exit_requested, running, run_again, exit_announced, ended;
bit state = IDLE;
byte repeat_count;

/* cv_, on which only the worker waits. */
bool sleeping, woken;
/* The pause after a failed run, and whether its deadline has passed. */
bool pausing, expired;

/* Where threads are. */
bool end_wanted, joined, worker_gone, in_action;

/* What has to happen. */
bool due_busy;           /* a run is asked for or under way, pauses included */
bool due_further;        /* one more is asked for */
byte due_runs;           /* how many may still follow for the present request */
bool due_served = true;  /* a run has begun since the last request */
byte ends_of_loop;       /* how often EndLoop() has run */

#define MAX_RUNS (repeat_count > 1 -> repeat_count : 1)

/* A request has been taken. */
inline due_request() {
  due_served = false;
  if
  :: !due_busy -> due_busy = true; due_runs = MAX_RUNS
  :: else -> due_further = true
  fi
}

/* A run begins. */
inline due_run() {
  assert(!exit_requested && !ended && !joined);  /* none after the end */
  assert(due_busy && due_runs > 0);              /* none that was not asked for */
  due_runs--;
  due_served = true
}

/* It has succeeded: a request meanwhile, however often it was made, is one more, with retries. */
inline due_success() {
  due_busy = due_further;
  due_runs = (due_further -> MAX_RUNS : 0);
  due_further = false
}

/* It has failed, and the pause is over: a request meanwhile is absorbed by the next retry. When
   there is none left it is one more run, without retries. */
inline due_retry() {
  if
  :: due_runs == 0 && due_further -> due_runs = 1
  :: due_runs == 0 && !due_further -> due_busy = false
  :: else
  fi;
  due_further = false
}

/* cv_.notify_one(): lost while no thread sleeps */
inline notify_one() {
  woken = sleeping
}

/* Start(): marks, then takes lock_ unless the mark was set, then notifies with lock_ free. A caller
   that logs takes lock_ all the same. `goes_on`: there is more to do. */
inline start() {
#ifdef FAULT_START_READS_THE_MARK_WITHOUT_AN_EXCHANGE
  /* What the caller wrote before may then become visible only after the run. */
  if
  :: run_again && !exit_requested -> due_served = false
  :: else ->
#endif
  atomic {
    if
    :: run_again ->
       due_served = due_served && exit_requested;
       if
       :: goes_on = false
       :: goes_on = true
       fi
    :: else ->
       run_again = true;
       goes_on = true;
       if
       :: !exit_requested -> due_request()
       :: else
       fi
    fi
  };
  if
  :: goes_on ->
     atomic {
       goes_on = false;
       if
       :: exit_requested
       :: !exit_requested && state == TRIGGERED ->
#ifdef FAULT_START_FORGETS_WHAT_COMES_DURING_A_RUN
          run_again = false
#else
          skip
#endif
       :: !exit_requested && state == IDLE ->
          if
#ifndef FAULT_START_WAKES_FOR_A_REQUEST_THAT_WAS_SERVED
          :: !run_again  /* a run has begun since */
          :: run_again ->
#else
          :: true ->
#endif
#ifndef FAULT_START_LEAVES_THE_MARK
             run_again = false;
#endif
             state = TRIGGERED;
             goes_on = true
          fi
       fi
     }
  :: else
  fi;
  if
#ifndef FAULT_START_WAKES_NO_THREAD
  :: goes_on -> atomic { notify_one(); goes_on = false }
#else
  :: goes_on -> goes_on = false
#endif
  :: else
  fi
#ifdef FAULT_START_READS_THE_MARK_WITHOUT_AN_EXCHANGE
  fi
#endif
}

/* EndLoop() */
inline end_loop() {
  ends_of_loop++;
  assert(ends_of_loop == 1);  /* the warning of an early end is written once at most */
  exit_requested = true;
  running = false;
#ifndef FAULT_END_WAKES_NO_THREAD
  notify_one()
#endif
}

/* RequestExit() */
inline request_exit() {
  atomic {
    if
    :: exit_requested
    :: else ->
       end_loop();
#ifndef FAULT_EXIT_IS_NOT_ANNOUNCED
       exit_announced = true
#endif
    fi
  }
}

/* ClientAction(): without the lock, whatever a subclass makes of it */
inline client_action() {
  if
  :: own_starts > 0 -> own_starts--; start()
  :: true
  fi;
  if
  :: request_exit()
  :: true
  fi;
  if
  :: done = true
  :: done = false
  fi
}

/* FinishSuccess() */
inline finish_success() {
  due_success();
#ifdef FAULT_SUCCESS_FORGETS_A_FURTHER_RUN
  state = IDLE;
  run_again = false
#else
  if
  :: !run_again -> state = IDLE
#ifdef FAULT_SUCCESS_KEEPS_THE_REQUEST
  :: else
#else
  :: else -> run_again = false
#endif
  fi
#endif
}

/* FinishFailure() */
inline finish_failure() {
  due_retry();
  again = run_again;
#ifndef FAULT_RETRY_DOES_NOT_ABSORB_A_REQUEST
  run_again = false;
#endif
  if
#ifdef FAULT_ONE_RETRY_TOO_MANY
  :: count <= repeat_count
#else
  :: count < repeat_count
#endif
#ifdef FAULT_LAST_RETRY_FORGETS_A_REQUEST
  :: else -> count = 0; state = IDLE
#else
  :: else ->
     if
     :: !again -> count = 0; state = IDLE
#ifdef FAULT_LAST_RUN_GETS_RETRIES
     :: else -> count = 0
#else
     :: else
#endif
     fi
#endif
  fi
}

/* RunThread(), with ThreadLoop() in it */
proctype Worker() {
  byte count;
  byte own_starts = OWN_STARTS;
  bool done, again, goes_on;

  atomic {
#ifndef FAULT_LOOP_BEGINS_AFTER_ITS_END
    if
    :: exit_requested -> goto leave
    :: else
    fi;
#endif
    running = true
  };

loop:
  atomic {
    if
    :: !running -> goto leave
    :: running && state == IDLE -> assert(!due_busy || run_again); sleeping = true; goto end_idle
    :: running && state != IDLE -> due_run(); in_action = true
    fi
  };

act:
  client_action();

  atomic {
    in_action = false;
    if
    :: !running -> goto leave
    :: running && done ->
       finish_success();
#ifndef FAULT_SUCCESS_KEEPS_THE_COUNT
       count = 0;
#endif
       goto loop
    :: running && !done ->
       count++;
       pausing = true;
       expired = false;
       sleeping = true
    fi
  };

pause:  /* wait_until() with the predicate !running_ */
  atomic { woken -> woken = false; sleeping = false };
  atomic {
    if
#ifndef FAULT_END_DOES_NOT_CUT_A_PAUSE_SHORT
    :: !running -> pausing = false; goto leave
#endif
    :: running && !expired -> sleeping = true; goto pause
    :: expired ->
       pausing = false;
       if
       :: !running -> goto leave
       :: else -> finish_failure(); goto loop
       fi
#ifdef FAULT_END_DOES_NOT_CUT_A_PAUSE_SHORT
    :: !running && !expired -> sleeping = true; goto pause
#endif
    fi
  };

end_idle:  /* wait() */
  atomic { woken -> woken = false; sleeping = false };
#ifdef FAULT_EVERY_WAKE_IS_TAKEN_FOR_A_REQUEST
  atomic {
    if
    :: !running -> goto leave
    :: else -> due_run(); in_action = true; goto act
    fi
  };
#else
  goto loop;
#endif

leave:  /* the rest of RunThread() */
  atomic { ended = true };
  worker_gone = true
}

/* A thread that asks for runs. */
proctype Client() {
  byte starts = STARTS;
  bool goes_on;
  do
  :: starts > 0 -> starts--; start()
  :: break
  od
}

/* A thread that must not wait for the worker, and perhaps asks whether it has ended. */
proctype Retirer() {
  if
  :: request_exit()
  :: true
  fi
}

/* Deadlines and spurious wakes. A deadline passes at some time; but once the end is asked for no thread
   counts on that: a pause may be as long as it likes. */
proctype Clock() {
  byte spurious = SPURIOUS_WAKES;
end_clock:
  do
  :: atomic { pausing && !expired -> expired = true; woken = sleeping }
  :: atomic { pausing && !expired && exit_requested -> goto stopped }
  :: atomic { spurious > 0 && sleeping && !woken -> spurious--; woken = true }
  :: spurious > 0 -> spurious = 0
  od;
stopped:
  skip
}

/* The owner: Initialize(), then perhaps Deinitialize() */
init {
  atomic {
    if
    :: repeat_count = 0
    :: repeat_count = 1
    :: repeat_count = 2
    fi;
    run Worker(); run Client(); run Client(); run Retirer(); run Clock()
  };
  if
  :: true ->
     atomic {
       end_wanted = true;
       if
       :: exit_announced -> exit_announced = false
       :: else -> end_loop()
       fi
     };
#ifndef FAULT_END_DOES_NOT_JOIN
     worker_gone;
#endif
     atomic { joined = true; assert(!in_action) }
  :: true  /* it lives on */
  fi
}

/* A thread that has asked for a run gets one that begins afterwards. */
ltl no_request_is_lost { [] (!due_served -> <> (due_served || exit_requested)) }

/* Deinitialize() returns, however long the pause would be. */
ltl the_end_comes { [] (end_wanted -> <> joined) }

/* A worker that is asked to end says that it has, also when no thread waits for it. */
ltl an_exit_is_reported { [] (exit_requested -> <> ended) }
