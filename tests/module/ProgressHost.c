#include "ProgressHost.h"

int RunJobInC(HMODULE module, int steps) {
  PostmarkerProgressFunctions functions;
  PostmarkerProgress* progress;
  int done = 0;
  if (!PostmarkerLoadProgress(module, &functions)) {
    return -1;
  }
  progress = functions.create(0, "A job in C", 0);
  functions.set(progress, "Counting", steps);
  while (done < steps && !functions.isCancelled(progress)) {
    functions.increase(progress, 1);
    ++done;
  }
  functions.complete(progress);
  functions.destroy(progress, 1);
  return done;
}
