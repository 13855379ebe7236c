// The objects of the stand-in's MAPI, and the memory that it hands out.
#pragma once

#include <windows.h>

#include <mapix.h>

#include <string>
#include <vector>

#include "Mailbox.h"

namespace postmarker::peer {

// Each returns an object that the caller releases.
IMAPISession* MakeSession();
// The message of a mail item or contact, which must stay where it is.
IUnknown* MakeMessage(const Item* item);

// All rows of one of the stand-in's tables.
SRowSet* AllRowsOf(IMAPITable* table, const SPropTagArray& tags);

// One property of a row or object. A type of error (PT_ERROR) has no value.
struct Property {
  ULONG tag = 0;
  std::string bytes;  // of a binary one, or of a text in the code page
  bool flag = false;
};

// Memory with these properties in one piece, or with rows of them in a piece each.
SPropValue* MakeProperties(const std::vector<Property>& properties);
SRowSet* MakeRows(const std::vector<std::vector<Property>>& rows);
SPropTagArray* MakeTags(const std::vector<ULONG>& tags);

// Gives back a piece, or rows with theirs.
void FreeMemory(void* memory);
void FreeRows(SRowSet* rows);

}  // namespace postmarker::peer
