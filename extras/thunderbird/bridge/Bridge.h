// The bridge without its edges: texts of the pipe's clients in, requests to the extension out, and
// the answers back. It waits for nothing and knows no operating system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ExtensionMessages.h"

namespace postmarker::bridge {

struct BridgeEdges {
  // Sends a message to the extension.
  std::function<void(const std::string& message)> post;
  // Writes a line for whoever looks for a fault. It names no folder and no address.
  std::function<void(const std::string& line)> log;
  // The id of the spam folder in the settings; any text, also an empty one.
  std::function<std::string()> spamFolderId;
};

// One client of the pipe has one request at a time: its next text is read when the reply to the
// last one is written. A client is named by the number of its connection, below `connections`. For
// one thread.
class Bridge {
 public:
  Bridge(BridgeEdges edges, size_t connections);

  // A client has come to this connection, or has left it: nothing of an earlier one remains, and
  // the extension stops working for it.
  void Reset(size_t connection);

  // Should the client's next text be read now.
  [[nodiscard]] bool WantsText(size_t connection) const;

  // Takes a text of the client. REQUIRES: WantsText.
  void TakeText(size_t connection, const std::wstring& text);

  // The next text for the client; null if there is none now. Valid until this object changes.
  [[nodiscard]] const std::wstring* NextText(size_t connection) const;

  // NextText was written. With the last one of a batch the extension is asked for the next batch.
  void DropText(size_t connection);

  // Takes a message of the extension. Whatever it is, nothing breaks; an answer that nobody waits
  // for is ignored.
  void TakeMessage(std::string_view message);

 private:
  enum class State {
    kIdle,
    kArgument,  // the client is to send a command's argument
    kAnswer,    // the extension is to send a batch
    kBatch,     // the client is to take a batch
  };

  struct Connection {
    State state = State::kIdle;
    std::string command;
    uint64_t request = 0;  // 0 without one
    bool isDone = true;    // the extension has nothing more
    std::deque<std::wstring> texts;
  };

  void Start(Connection* connection, std::wstring_view command);
  void TakeArgument(Connection* connection, const std::wstring& text);
  void AskForFolder(Connection* connection, const std::wstring& text);
  void Ask(Connection* connection, const std::function<std::string(uint64_t id)>& makeRequest);
  void TakeAnswer(Connection* connection, const Answer& answer);
  size_t AppendItem(const Item& item, Connection* connection);
  void End(Connection* connection);
  void Settle(Connection* connection);
  Connection* FindRequest(uint64_t id);

  BridgeEdges m_edges;
  std::vector<Connection> m_connections;
  uint64_t m_lastRequest = 0;
};

}  // namespace postmarker::bridge
