// A tree view with check boxes that act on whole subtrees.
#pragma once

#include <windows.h>

#include "ui/CTreeCtrl.h"

namespace postmarker {

// A click on an item's check box with either button, and the blank for the selected item, give the
// item and all that is below it the opposite of the item's check state. Parents do not follow their
// children. For the window's own thread.
class CCustomTreeCtrl : public CTreeCtrl {
 public:
  // Takes over a tree view that has no items yet, and gives it check boxes. False if there is no
  // such window or the object has one already.
  bool Attach(HWND tree);

  // New items are not checked.
  [[nodiscard]] bool IsChecked(HTREEITEM item) const;

 protected:
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  void SetChecked(HTREEITEM item, bool checked) const;
  void ToggleSubtree(HTREEITEM top) const;
  [[nodiscard]] HTREEITEM FirstLeaf(HTREEITEM item) const;

  LRESULT HandleButtonDown(const MessageArgs& args);
  LRESULT HandleKeyDown(const MessageArgs& args);
  LRESULT HandleChar(const MessageArgs& args);
  LRESULT HandleDestroy(const MessageArgs& args);
};

}  // namespace postmarker
