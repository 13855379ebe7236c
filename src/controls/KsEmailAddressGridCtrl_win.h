// A grid of mail addresses that can be edited in their places.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "controls/AddressRows.h"
#include "controls/CGridCtrl_win.h"
#include "controls/KsToolTip_win.h"
#include "postmarker/WizardRequest.h"
#include "settings/AddressValidator.h"
#include "support/ComPtr_win.h"

namespace postmarker {

// The texts of an address grid, in the order in which its owner gives them.
struct AddressGridPrompts {
  std::wstring address;    // heading of the first column, and the name of its editor
  std::wstring domain;     // heading of the second column, which repeats what follows the "@"
  std::wstring empty;      // stands in the grid while it has no row
  std::wstring newRow;     // tip at the editor of a new row: what to type
  std::wstring name;       // name of the grid for who reads the screen aloud
  std::wstring duplicate;  // tip: the address typed is in the list already
  std::wstring leftOut;    // tip after a paste: one %d, the number of texts that are no addresses
  std::wstring invalid;    // tip at the editor: this is no address
};

// Each row is one address; the second column shows its domain. Rows are sorted by the order of
// their UTF-16 units and free of duplicates. A click on an address, the blank key or F2 edits it;
// Return takes the text if it is an address, Escape leaves the row as it was. Clicks with the
// control and the shift key select several rows; Ctrl+A selects all, Ctrl+C copies them, and Ctrl+V
// adds every address of the clipboard's text. The keys Insert and Delete are the owner's: the grid
// passes WM_KEYUP of them on to its parent as it came.
//
// The parent gets LVN_ITEMCHANGED of the list view as usual. For the window's thread, which must
// also make and destroy the object: it joins the thread to an apartment for its life.
class KsEmailAddressGridCtrl : public CGridCtrl {
 public:
  KsEmailAddressGridCtrl();
  ~KsEmailAddressGridCtrl() override;

  // Makes the two columns, both this wide, and rows this high, in pixels. REQUIRES: Attach. False
  // if the list view refuses.
  bool Initialise(int columnWidth, int rowHeight, AddressGridPrompts prompts);

  // Whether rows are addresses or domains: kAddress after Initialise.
  void SetMode(AddressMode mode);

  // Adds the lower-case form of a text at its sorted place, unless it is there; returns its row. -1
  // for an empty text. The text is not validated. Rows come by this function and by the person's
  // edits alone, so that they are always in order and one lookup takes the logarithm of their
  // number. The window is repainted when no message waits, or after a tenth of a second.
  int AddAddress(const std::wstring& text);

  // The row of exactly this text, or -1.
  [[nodiscard]] int FindAddress(const std::wstring& text) const;

  // Adds the texts of all rows to the set.
  void ReadAddresses(AddressSet* out) const;

  // Starts a new row: opens an editor in an empty row at the end. A row that is left empty, or
  // whose edit is canceled, goes again. False if an open edit refuses to end.
  bool BeginNewRow();

  // Gives an open edit up, as the escape key does.
  void ClearEditState();

  // Removes the selected rows; the focus goes to the next one that stays.
  void RemoveSelected();

 protected:
  void OnAttached() override;
  [[nodiscard]] CellKind GetCellKind(int row, int col) const override;
  [[nodiscard]] std::wstring EditorName(int row, int col) const override;
  bool OnCellEditDone(int row, int col, const std::wstring& text, const ComboItem& item,
                      bool cancelled) override;
  LRESULT OnKeyDown(const MessageArgs& args) override;
  LRESULT OnKeyUp(const MessageArgs& args) override;
  LRESULT OnTimer(const MessageArgs& args) override;
  LRESULT OnAllRowsDeleted(const MessageArgs& args) override;
  LRESULT WindowProc(const MessageArgs& args) override;

 private:
  void HoldPainting();
  void ReleasePainting();
  [[nodiscard]] std::wstring Address(int row) const;
  [[nodiscard]] int OrderedCount() const;
  [[nodiscard]] RowPlace Find(const std::wstring& address) const;
  int InsertAddress(int row, const std::wstring& address);
  void RemoveRow(int row);
  void StoreAddress(int row, const std::wstring& address);
  void ShowTip(const std::wstring& text, int row);
  void SelectAll() const;
  void CopySelected() const;
  void Paste();

  ComApartment m_apartment;
  std::unique_ptr<AddressValidator> m_validator;
  AddressGridPrompts m_prompts;
  KsToolTip m_tip;
  ULONGLONG m_heldSince = 0;  // when painting was held up; 0 while it is not
  bool m_hasNewRow = false;   // the last row is one whose first edit is open
};

}  // namespace postmarker
