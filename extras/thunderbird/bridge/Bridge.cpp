#include "Bridge.h"

#include <algorithm>
#include <array>
#include <utility>

#include "PipeTexts.h"
#include "support/Text.h"

namespace postmarker::bridge {
namespace {

constexpr char kAddFolder[] = "AddNewFolder";
constexpr char kSetMove[] = "SetMoveMails";
constexpr wchar_t kGoOn[] = L"OK";
constexpr wchar_t kStep[] = L"IncreaseProgressBar";

struct Command {
  std::string_view name;
  bool hasArgument;
  bool hasReply;
};

constexpr std::array kCommands = {
    Command{"GiveAllFolders", false, true},
    Command{"GiveContacts", false, true},
    Command{"SentItemsEntries", false, true},
    Command{"GiveAddressesFromSentItems", false, true},
    Command{kAddFolder, true, true},
    Command{kSetMove, true, true},
    Command{"HideThunderbirdWindow", false, false},
    Command{"ExitThunderbird", false, false},
};

const Command* FindCommand(std::string_view name) {
  const auto* const found =
      std::find_if(kCommands.begin(), kCommands.end(),
                   [&](const Command& command) { return command.name == name; });
  return found == kCommands.end() ? nullptr : found;
}

}  // namespace

Bridge::Bridge(BridgeEdges edges, size_t connections)
    : m_edges(std::move(edges)), m_connections(connections) {}

void Bridge::Reset(size_t connection) {
  Connection& left = m_connections[connection];
  if (!left.isDone) {
    m_edges.post(RequestText(left.request, "Stop"));
  }
  left = {};
}

bool Bridge::WantsText(size_t connection) const {
  const Connection& client = m_connections[connection];
  return client.texts.empty() && (client.state == State::kIdle || client.state == State::kArgument);
}

void Bridge::TakeText(size_t connection, const std::wstring& text) {
  Connection& client = m_connections[connection];
  if (client.state == State::kArgument) {
    TakeArgument(&client, text);
  } else {
    Start(&client, text);
  }
}

const std::wstring* Bridge::NextText(size_t connection) const {
  const Connection& client = m_connections[connection];
  return client.texts.empty() ? nullptr : &client.texts.front();
}

void Bridge::DropText(size_t connection) {
  Connection& client = m_connections[connection];
  client.texts.pop_front();
  Settle(&client);
}

void Bridge::TakeMessage(std::string_view message) {
  const std::optional<Answer> answer = ParseAnswer(message);
  if (!answer) {
    m_edges.log("a message of " + std::to_string(message.size()) + " bytes is no answer");
    return;
  }
  Connection* connection = FindRequest(answer->id);
  // The answer to a request that was stopped may have been under way.
  if (connection != nullptr && connection->state == State::kAnswer) {
    TakeAnswer(connection, *answer);
  }
}

void Bridge::Start(Connection* connection, std::wstring_view text) {
  const Command* command = FindCommand(NarrowUtf8(text));
  if (command == nullptr) {
    m_edges.log("an unknown command of " + std::to_string(text.size()) + " characters is ignored");
    return;
  }
  connection->command = command->name;
  if (command->hasArgument) {
    connection->state = State::kArgument;
    connection->texts.emplace_back(kGoOn);
    return;
  }
  Ask(connection, [command](uint64_t id) { return RequestText(id, command->name); });
}

void Bridge::TakeArgument(Connection* connection, const std::wstring& text) {
  if (connection->command == kAddFolder) {
    AskForFolder(connection, text);
    return;
  }
  const std::string folder = m_edges.spamFolderId();
  Ask(connection, [&](uint64_t id) {
    return MoveRequestText(id, text == L"true", IsFolderId(folder) ? folder : std::string());
  });
}

void Bridge::AskForFolder(Connection* connection, const std::wstring& text) {
  const std::optional<FolderItem> folder = ParseNewFolderText(text);
  if (!folder) {
    m_edges.log("a new folder is not made: its name can't be expressed");
    End(connection);
    return;
  }
  Ask(connection,
      [&](uint64_t id) { return NewFolderRequestText(id, folder->path, folder->store); });
}

void Bridge::Ask(Connection* connection,
                 const std::function<std::string(uint64_t id)>& makeRequest) {
  connection->request = ++m_lastRequest;
  connection->isDone = false;
  connection->state = State::kAnswer;
  m_edges.post(makeRequest(connection->request));
}

void Bridge::TakeAnswer(Connection* connection, const Answer& answer) {
  if (answer.error) {
    m_edges.log(connection->command + " failed: " + *answer.error);
  }
  size_t leftOut = answer.unusable;
  for (const Item& item : answer.items) {
    leftOut += AppendItem(item, connection);
  }
  if (leftOut > 0) {
    m_edges.log(connection->command + ": " + std::to_string(leftOut) +
                " entries are left out, as the pipe can't express them");
  }
  connection->state = State::kBatch;
  if (answer.done) {
    End(connection);
  }
  Settle(connection);
}

// Appends the texts for an item; returns how many entries have none.
size_t Bridge::AppendItem(const Item& item, Connection* connection) {
  const auto append = [connection](std::optional<std::wstring> text) -> size_t {
    if (!text) {
      return 1;
    }
    connection->texts.push_back(*std::move(text));
    return 0;
  };
  const std::string& command = connection->command;
  if (const auto* folder = std::get_if<FolderItem>(&item)) {
    if (command == "GiveAllFolders") {
      return append(FolderText(*folder));
    }
    return command == kAddFolder ? append(NewFolderText(*folder)) : 1;
  }
  if (const auto* address = std::get_if<std::string>(&item)) {
    return command == "GiveContacts" ? append(AddressText(*address)) : 1;
  }
  if (const auto* count = std::get_if<int64_t>(&item)) {
    return command == "SentItemsEntries" ? append(CountText(*count)) : 1;
  }
  if (command != "GiveAddressesFromSentItems") {
    return 1;
  }
  const auto& sent = std::get<SentItem>(item);
  std::vector<std::wstring> texts = {kStep};
  size_t leftOut = 0;
  for (const auto* entries : {&sent.to, &sent.cc, &sent.bcc}) {
    leftOut += AppendRecipientTexts(*entries, &texts);
  }
  std::move(texts.begin(), texts.end(), std::back_inserter(connection->texts));
  return leftOut;
}

// Nothing more comes: the reply gets its end.
void Bridge::End(Connection* connection) {
  connection->isDone = true;
  connection->state = State::kBatch;
  if (FindCommand(connection->command)->hasReply) {
    connection->texts.push_back(EndText(connection->command));
  }
}

// After a batch was taken: the next one, or the next command.
void Bridge::Settle(Connection* connection) {
  if (!connection->texts.empty() || connection->state != State::kBatch) {
    return;
  }
  if (connection->isDone) {
    *connection = {};
    return;
  }
  connection->state = State::kAnswer;
  m_edges.post(RequestText(connection->request, "Next"));
}

Bridge::Connection* Bridge::FindRequest(uint64_t id) {
  const auto found =
      std::find_if(m_connections.begin(), m_connections.end(), [id](const Connection& connection) {
        return !connection.isDone && connection.request == id;
      });
  return found == m_connections.end() ? nullptr : &*found;
}

}  // namespace postmarker::bridge
