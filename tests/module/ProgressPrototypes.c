/* Compiled only: the prototypes of the header fit the pointers of its loader. */
#include "postmarker/Progress.h"

void FillByPrototypes(PostmarkerProgressFunctions* functions);

void FillByPrototypes(PostmarkerProgressFunctions* functions) {
  functions->create = &CreateProgressbar;
  functions->set = &SetProgressbar;
  functions->increase = &IncreaseProgressbar;
  functions->complete = &CompleteProgressbar;
  functions->isCancelled = &GetIsCancelledProgressbar;
  functions->isFinished = &GetIsFinishedProgressbar;
  functions->destroy = &DestroyProgressbar;
}
