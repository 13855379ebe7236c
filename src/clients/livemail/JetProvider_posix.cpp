#include "clients/livemail/EseJetApi.h"
#include "clients/livemail/JetProvider.h"

namespace postmarker {

const JetApi& MachineJetApi() {
  return EseJetApi();
}

}  // namespace postmarker
