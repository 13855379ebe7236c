// One folder of a mail client, and a folder with its check state on a training page.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace postmarker {

// Wide strings hold UTF-16 units, one per element. Narrow strings are bytes. Copying copies all
// four fields.
struct MailFolderRef {
  // The folder's path: normally two backslashes, the store's name, then the levels, separated by
  // backslashes. Folder trees are built from this path alone.
  std::wstring name;

  // The folder's id in its store. "0" stands for the client's default (deleted items) folder with
  // Outlook Express, Windows Mail and Windows Live Mail.
  std::string firstId;

  // The id of the store. All folders of one store share it.
  std::string secondId;

  // Nonzero folders are laid into a tree before zero ones.
  uint32_t flag = 0;

  friend bool operator==(const MailFolderRef&, const MailFolderRef&) = default;
};

using MailFolderList = std::vector<MailFolderRef>;

// A folder of a training page. `checked` is 1 if the user checked it, otherwise 0.
struct TrainFolderEntry {
  MailFolderRef folder;
  uint32_t checked = 0;
};

}  // namespace postmarker
