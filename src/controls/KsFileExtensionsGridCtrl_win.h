// A grid of file extensions and of what is done with files of these kinds.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "controls/CGridCtrl_win.h"
#include "controls/KsToolTip_win.h"

namespace postmarker {

// The texts of the grid.
struct FileExtensionsPrompts {
  std::wstring extension;  // heading of the first column, whose check boxes say what counts
  std::wstring spelling;   // heading of the second column, in which an extension is edited
  std::wstring action;     // heading of the third column
  std::wstring name;       // name of the grid for who reads the screen aloud
  std::wstring invalid;    // tip: this is no extension
  std::wstring duplicate;  // tip: the extension is in the list already
};

struct FileExtensionRow {
  std::wstring extension;  // ".txt"
  std::wstring action;
  bool checked = true;
  bool operator==(const FileExtensionRow&) const = default;
};

// Each row has a check box, an extension that is edited in its place, and one of the actions that
// the owner offers, chosen from a combo box that takes other texts, too. A click on the heading of
// extensions or actions sorts. For the window's thread.
class KsFileExtensionsGridCtrl : public CGridCtrl {
 public:
  // Makes the columns. REQUIRES: Attach. False if the list view refuses.
  bool Initialise(FileExtensionsPrompts prompts, std::vector<std::wstring> actions);

  // Adds an extension at the end, in the form that FileExtensionForm gives it. Its row; -1 for a
  // text that is none, or is there already.
  int AddExtension(const FileExtensionRow& row);

  // All rows from the top.
  [[nodiscard]] std::vector<FileExtensionRow> ReadExtensions() const;

 protected:
  void OnAttached() override;
  [[nodiscard]] CellKind GetCellKind(int row, int col) const override;
  [[nodiscard]] bool IsCellChecked(int row, int col) const override;
  void OnCellChecked(int row, int col) override;
  [[nodiscard]] std::vector<std::wstring> ComboChoices(int row, int col) const override;
  bool OnCellEditDone(int row, int col, const std::wstring& text, const ComboItem& item,
                      bool cancelled) override;

 private:
  [[nodiscard]] int FindExtension(const std::wstring& extension) const;
  void ShowTip(const std::wstring& text, int row, int col);

  FileExtensionsPrompts m_prompts;
  std::vector<std::wstring> m_actions;
  KsToolTip m_tip;
};

}  // namespace postmarker
