/* A host in C. */
#ifndef POSTMARKER_TESTS_PROGRESS_HOST_H
#define POSTMARKER_TESTS_PROGRESS_HOST_H

#include "postmarker/Progress.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Takes the functions of a module by the loader and runs a job of `steps` steps, of which each asks
 * for a stop. The number of steps done; -1 if the module lacks the functions. */
int RunJobInC(HMODULE module, int steps);

#ifdef __cplusplus
}
#endif

#endif
