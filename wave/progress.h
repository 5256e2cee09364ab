// Timers and the progress text of a run.
#pragma once

// which 0: store the millisecond clock as start; 1: store the stop time and return the
// seconds between them.
double stopwatch(int which);
// Methods: -1 start of a run (with all counters 0: end of a run, formats cleared); 0 start of
// a component; 1 LFE, 2 phase gradient, 3 matched filter, 4 direct inversion. Others ignored.
void run_progress(int method, int step, int nsteps, int component, int ncomponents, int angle,
                  int nangles);
// 0 keeps the counters last given to run_progress; 1 component, 2 ncomponents, 3 angle,
// 4 nangles; 5 nangles * ncomponents, the driver's total of passes.
int run_query(int key);
