// The rules of a list of addresses in rows: order, duplicates, and what becomes of an edit.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace postmarker {

// Reads the text of a row.
using RowText = std::function<std::wstring(int32_t row)>;

// The place of a text among sorted rows: its row, or the one that it would be inserted at.
struct RowPlace {
  int32_t row = 0;
  bool exists = false;
};

// Looks a text up among `count` rows that are in ascending order of their UTF-16 units, without
// duplicates. Reads about log2(count) rows.
RowPlace FindRowPlace(int32_t count, const RowText& textOf, const std::wstring& text);

// The part of an address after its last "@"; empty without one.
std::wstring DomainOf(const std::wstring& address);

// The form in which a typed text stands in the list: without white space at its ends, in lower
// case.
std::wstring AddressForm(std::wstring_view typed);

// The texts of a clipboard's text that may be addresses: what stands between white space, commas
// and semicolons, without angle brackets and quotation marks around it, in list form.
std::vector<std::wstring> SplitAddresses(std::wstring_view text);

// What becomes of a row whose edit ended.
enum class EditOutcome {
  kKeep,       // it stays as it was
  kStore,      // it gets the new text
  kRemove,     // it goes
  kInvalid,    // the edit goes on: the text is no address
  kDuplicate,  // the edit goes on: another row has the text
};

struct AddressEdit {
  std::wstring before;  // the row's text; empty for a new row
  std::wstring typed;   // as it was typed
  bool cancelled = false;
};

// `isValid` and `exists` are asked for the list form of the typed text. A row whose text is deleted
// goes; a text that is the old one but for case or white space is no change.
EditOutcome DecideEdit(const AddressEdit& edit,
                       const std::function<bool(const std::wstring& address)>& isValid,
                       const std::function<bool(const std::wstring& address)>& exists);

// A text with its first "%d" replaced by a number.
std::wstring WithNumber(std::wstring text, int32_t number);

}  // namespace postmarker
