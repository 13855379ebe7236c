// How a test controls the stand-in for Outlook that is loaded into its process.
#pragma once

#include <windows.h>

#include <oaidl.h>

namespace postmarker::peer {

// What becomes of one call, counted from 1 since the last reset. A call is one of a member of the
// object model, of a MAPI function, or of a member of a MAPI object.
struct PeerFault {
  long call = 0;            // 0: none
  bool andLater = false;    // and of all calls after it
  HRESULT result = E_FAIL;  // S_OK: it says that it worked, and gives nothing
  DWORD hangMs = 0;         // how long it hangs first at most; with S_OK it then works as ever
};

class PeerControl {
 public:
  // Takes another mailbox; no object may be alive. False if it can't be read.
  virtual bool Load(const wchar_t* file) = 0;

  // An application object; the caller releases it.
  virtual IDispatch* MakeApplication() = 0;

  // Objects and pieces of memory that were handed out and not given back.
  virtual long Live() = 0;
  // How often memory was given back that was not handed out.
  virtual long FalseReleases() = 0;

  virtual void ResetCalls() = 0;
  virtual void SetFault(const PeerFault& fault) = 0;
  virtual long Calls() = 0;
  // Of a name such as "Items.Item" or "MAPILogonEx".
  virtual long CallsOf(const char* name) = 0;
  // The names of the first few thousand calls, a line each; valid until the next call of this.
  virtual const char* Journal() = 0;
  // Is a call hanging right now.
  virtual bool IsHanging() = 0;
  // Lets the calls that hang go on, and all later ones; until the calls are reset.
  virtual void EndHangs() = 0;

 protected:
  ~PeerControl() = default;
};

// Exported by the library under the name "OutlookPeerControl".
using OutlookPeerControlFunction = PeerControl*(__cdecl*)();

}  // namespace postmarker::peer
