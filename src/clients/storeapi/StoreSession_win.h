// The opened store, and what is read from it piece by piece. Everything here belongs to the thread
// that made it.
#pragma once

#include <cstdint>

#include "clients/storeapi/StoreFolderTree.h"
#include "clients/storeapi/StoreInterfaces_win.h"
#include "support/ComPtr_win.h"
#include "support/StopQuery.h"

namespace postmarker::storeapi {

// Opens the store for one operation: joins an apartment, creates the store's object and initializes
// it. The client is told not to compact its store meanwhile. Releasing it leaves the apartment.
class StoreSession {
 public:
  StoreSession();

  // 0, or the code with which opening ended; then there is no store.
  [[nodiscard]] HRESULT Result() const { return m_result; }

  [[nodiscard]] IStoreNamespace* Store() const { return m_store.Get(); }

 private:
  ComApartment m_apartment;  // left after the store is released
  ComPtr<IStoreNamespace> m_store;
  HRESULT m_result;
};

// A folder's properties, asked for in the form that the store takes.
class FolderPropsQuery {
 public:
  // Calls ask(props), again with the long form if the store says that the size is wrong, and
  // returns its result. Later calls of AskAgain use the form that was used last.
  template <class Ask>
  HRESULT AskEitherForm(const Ask& ask) {
    m_isLong = false;
    HRESULT result = AskAgain(ask);
    if (result == kWrongStructSize) {
      m_isLong = true;
      result = AskAgain(ask);
    }
    return result;
  }

  template <class Ask>
  HRESULT AskAgain(const Ask& ask) {
    m_props = {};
    if (!m_isLong) {
      return ask(&m_props);
    }
    StoreFolderPropsLong longForm;
    const HRESULT result = ask(reinterpret_cast<StoreFolderProps*>(&longForm));
    m_props = ToShortForm(longForm);
    return result;
  }

  // What the last call that worked has filled in, in the short form.
  [[nodiscard]] const StoreFolderProps& Props() const { return m_props; }

 private:
  StoreFolderProps m_props;
  bool m_isLong = false;
};

// Reads all folders of the store. `stop` is asked at each folder. Returns the code with which the
// root or the folders below one could not be read, the first of several; the tree holds what was
// read all the same.
HRESULT WalkFolders(IStoreNamespace* store, const StopQuery& stop, StoreFolderTree* tree);

// The messages of a folder, one after the other.
class MessageWalk {
 public:
  // Goes to the first message. `folder` outlives the walk.
  explicit MessageWalk(IStoreFolder* folder);
  MessageWalk(const MessageWalk&) = delete;
  MessageWalk& operator=(const MessageWalk&) = delete;
  ~MessageWalk();

  [[nodiscard]] bool HasMessage() const { return m_hasMessage; }
  [[nodiscard]] MessageId Id() const { return m_props.dwMessageId; }
  void Next();

 private:
  void Take(HRESULT result);
  void GiveBack();

  IStoreFolder* m_folder;
  EnumHandle m_handle = nullptr;
  MessageProps m_props;
  bool m_hasMessage = false;
};

}  // namespace postmarker::storeapi
