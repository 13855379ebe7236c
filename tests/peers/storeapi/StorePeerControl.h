// What a test does with the stand-in for the mail store: it runs in the test's own process, as a
// library that the platform loads like the real one.
#pragma once

#include <cstdint>

namespace postmarker::peer {

// Obtained from the library's function GetStorePeer. Texts are UTF-8.
struct StorePeerControl {
  // Replaces the store, and forgets counts, faults and the journal. JSON:
  //   {"form": 280,              the size of folder records that the store takes, or 288
  //    "root": {"id": 0, "name": "Local Folders", "type": -1,    without it there is no store
  //             "bytes": "4772..", instead of a name: its bytes as hexadecimal digits
  //             "messages": ["To: ..."], "repeat": 1,   as often as this, one after the other
  //             "children": [{...}, {"again": 0}]},     a folder that is there under its id
  //    "endless": false,         true: no enumeration of folders, messages or contacts ends
  //    "shortReads": 0,          other than 0: what a stream gives at most for one read
  //    "contacts": ["a@x", null, 5]}   without it there are no contacts; null is a deleted
  //                              address, a number one that can't be read
  void (*setState)(const char* json);

  // Lets the call with this number (from 1) fail with a code; of one method, such as
  // "Namespace.OpenFolder", or of all methods together if that is empty. 0: none.
  void (*failCall)(const char* method, int number, int32_t result);

  // How often a method was called since setState; of all methods together if that is empty.
  int (*countCalls)(const char* method);

  // Objects, enumerations and records of messages that were handed out and not given back.
  int (*countLive)();

  // The largest number of bytes that one read of a message asked for.
  uint32_t (*largestRead)();

  // What was changed, a line for each change; until the next call.
  const char* (*journal)();

  // The subject of the MIME message that was opened last; until the next call. *references is how
  // many others still hold it. To be called in the apartment of that message, once.
  const char* (*closeMimeMessage)(uint32_t* references);
};

using GetStorePeerFunction = const StorePeerControl* (*)();

}  // namespace postmarker::peer
