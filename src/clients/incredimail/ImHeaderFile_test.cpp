#include "clients/incredimail/ImHeaderFile.h"

#include <gtest/gtest.h>

#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"
#include "support/Prefixes.h"

namespace postmarker {
namespace {

using test::ImBytes;
using test::ImGuid;
using test::ImRecord;

ImHeaderMap Parse(std::string_view bytes) {
  PacedStop never;
  ImHeaderMap headers;
  ParseHeaderFile(bytes, L"dir\\", L"Sent Items", &never, &headers);
  return headers;
}

std::vector<std::wstring> IdsOf(const ImHeaderMap& headers) {
  std::vector<std::wstring> ids;
  for (const auto& [id, header] : headers) {
    ids.push_back(id);
  }
  return ids;
}

using Ids = std::vector<std::wstring>;

std::vector<ImRecord> ThreeRecords() {
  return {{1, L"to@a", L"from@a", L"Hello", L"work", 0x1234, 0x5678},
          {2, L"to@b", L"from@b", L"J\u00FCrgen", {}, 7, 0},
          {3, L"to@c", L"from@c", L"", L"home", 0xFF, 0x010203}};
}

TEST(ImHeaderFile, ReadsAllFields) {
  const ImHeaderMap headers = Parse(test::MakeImHeaderFile(ThreeRecords()));
  ASSERT_EQ(IdsOf(headers), (Ids{ImGuid(1), ImGuid(2), ImGuid(3)}));
  const ImHeader& first = headers.at(ImGuid(1));
  EXPECT_EQ(first.HeaderID, ImGuid(1));
  EXPECT_EQ(first.ToSender, L"to@a");
  EXPECT_EQ(first.FromSender, L"from@a");
  EXPECT_EQ(first.Subject, L"Hello");
  EXPECT_EQ(first.Account, L"work");
  EXPECT_EQ(first.MsgSize, 0x1234U);
  EXPECT_EQ(first.LightMsgSize, 0x1234U);
  EXPECT_EQ(first.MsgPos, 0x5678U);
  EXPECT_EQ(first.StorePath, L"dir\\");
  EXPECT_EQ(first.FileName, L"Sent Items");
  EXPECT_EQ(first.ContainerID, L"");
  EXPECT_EQ(first.ReceivedDate, 0);
  EXPECT_EQ(first.Deleted, 0);
  EXPECT_EQ(headers.at(ImGuid(2)).Account, L"");
  EXPECT_EQ(headers.at(ImGuid(2)).MsgSize, 7U);
  EXPECT_EQ(headers.at(ImGuid(3)).Subject, L"");
  EXPECT_EQ(headers.at(ImGuid(3)).MsgPos, 0x010203U);
}

TEST(ImHeaderFile, RecipientStandsAheadOfTheSender) {
  const ImHeaderMap headers = Parse(test::MakeImHeaderFile({{1, L"first", L"second", L""}}));
  EXPECT_EQ(headers.at(ImGuid(1)).ToSender, L"first");
  EXPECT_EQ(headers.at(ImGuid(1)).FromSender, L"second");
}

TEST(ImHeaderFile, FileOf12BytesOrLessGivesAnEmptyMapAndSuccess) {
  const test::TempFolder folder;
  PacedStop never;
  ImHeaderMap headers;
  for (size_t size = 1; size <= 12; ++size) {
    test::WriteFile(folder.PathOf("x.imh"), std::string(size, '\x01'));
    EXPECT_EQ(ReadHeaderFile(folder.PathOf("x.imh"), L"", L"", &never, &headers), kOk);
    EXPECT_TRUE(headers.empty());
  }
}

TEST(ImHeaderFile, FileThatIsMissingOrEmptyFails) {
  const test::TempFolder folder;
  PacedStop never;
  ImHeaderMap headers;
  EXPECT_EQ(ReadHeaderFile(folder.PathOf("x.imh"), L"", L"", &never, &headers), kFail);
  test::WriteFile(folder.PathOf("x.imh"), "");
  EXPECT_EQ(ReadHeaderFile(folder.PathOf("x.imh"), L"", L"", &never, &headers), kFail);
}

TEST(ImHeaderFile, StopIsAskedAfterEveryHundredRecordsAndKeepsThoseBefore) {
  std::vector<ImRecord> records;
  for (uint32_t id = 1; id <= 1000; ++id) {
    records.push_back({id, L"to", L"from", L"subject"});
  }
  int asked = 0;
  PacedStop stop([&asked] { return ++asked == 3; });
  ImHeaderMap headers;
  ParseHeaderFile(test::MakeImHeaderFile(records), L"", L"", &stop, &headers);
  EXPECT_EQ(headers.size(), 300U);
  EXPECT_EQ(asked, 3);
}

std::vector<ImRecord> RecordsOfKinds(const std::vector<int>& kinds) {
  std::vector<ImRecord> records;
  for (const int kind : kinds) {
    const auto id = static_cast<uint32_t>(records.size() + 1);
    records.push_back({id, L"to", L"from", L"subject", L"account", 1, 1, kind});
  }
  return records;
}

TEST(ImHeaderFile, RecordOfKind2IsPassedOverAndSoIsTheNextOfAnotherKind) {
  EXPECT_EQ(IdsOf(Parse(test::MakeImHeaderFile(RecordsOfKinds({1, 2, 0, 3, 1, 0xFF, 2, 1})))),
            (Ids{ImGuid(1), ImGuid(5), ImGuid(6), ImGuid(8)}));
}

TEST(ImHeaderFile, FirstRecordOfAnotherKindIsUsable) {
  EXPECT_EQ(IdsOf(Parse(test::MakeImHeaderFile(RecordsOfKinds({0, 7, 0x82})))),
            (Ids{ImGuid(1), ImGuid(2), ImGuid(3)}));
}

TEST(ImHeaderFile, RecordWithAnIdThatIsThereAlreadyReplacesIt) {
  const ImHeaderMap headers = Parse(test::MakeImHeaderFile(
      {{1, L"a", L"", L"", L"account"}, {2, L"b", L"", L""}, {1, L"c", L"", L""}}));
  ASSERT_EQ(headers.size(), 2U);
  EXPECT_EQ(headers.at(ImGuid(1)).ToSender, L"c");
  EXPECT_EQ(headers.at(ImGuid(1)).Account, L"");
}

// The byte that decides is the first of the account's text, or one that is not read.
TEST(ImHeaderFile, AccountIsThereIfItBeginsWithAnAsciiLetter) {
  const auto accountFor = [](int byte) {
    ImBytes out;
    out.Unread(12).Byte(1).Unread(9).Guid(1).Text(L"").Text(L"").Text(L"").Unread(12);
    out.Dword(1).Byte(byte).Byte(0).Unread(4).Dword(0x11).Dword(0x22).Unread(40);
    const ImHeaderMap headers = Parse(out.Bytes());
    return headers.at(ImGuid(1)).Account;
  };
  EXPECT_EQ(accountFor('a'), L"a");
  EXPECT_EQ(accountFor('Z'), L"Z");
  for (const int byte : {0x30, 0x40, 0x5B, 0x60, 0x7B, 0x20, 0, 0xC4, 0xE4, 0xFC, 0xB5}) {
    EXPECT_EQ(accountFor(byte), L"") << byte;
  }
}

TEST(ImHeaderFile, SizeWhoseLowByteIsZeroReadsAsZero) {
  const ImHeaderMap headers =
      Parse(test::MakeImHeaderFile({{1, L"", L"", L"", {}, 0x00010200, 0x01000203}}));
  EXPECT_EQ(headers.at(ImGuid(1)).MsgSize, 0U);
  EXPECT_EQ(headers.at(ImGuid(1)).LightMsgSize, 0U);
  EXPECT_EQ(headers.at(ImGuid(1)).MsgPos, 0x0203U);
}

TEST(ImHeaderFile, EveryPrefixGivesTheRecordsBeforeTheCut) {
  const std::vector<ImRecord> records = ThreeRecords();
  const std::string bytes = test::MakeImHeaderFile(records);
  const ImHeaderMap whole = Parse(bytes);
  test::ForEveryPrefix(bytes, [&](std::string_view prefix) {
    for (const auto& [id, header] : Parse(prefix)) {
      EXPECT_EQ(header.ToSender, whole.at(id).ToSender);
      EXPECT_EQ(header.Account, whole.at(id).Account);
      EXPECT_EQ(header.MsgSize, whole.at(id).MsgSize);
    }
  });
}

// The record's last field that is read is its position; it counts as soon as one byte of that is
// there, and takes nothing from beyond the end.
TEST(ImHeaderFile, LastRecordMayEndWithinItsPosition) {
  const std::string bytes =
      test::MakeImHeaderFile({{1, L"a", L"b", L"c", {}, 0x01020304, 0x05060708}});
  const size_t position = bytes.size() - 20;
  EXPECT_TRUE(Parse(std::string_view(bytes).substr(0, position)).empty());
  EXPECT_EQ(Parse(std::string_view(bytes).substr(0, position + 1)).at(ImGuid(1)).MsgPos, 0x08U);
  EXPECT_EQ(Parse(std::string_view(bytes).substr(0, position + 3)).at(ImGuid(1)).MsgPos, 0x060708U);
}

TEST(ImHeaderFile, FlippedBytesNeverCrashAndNeverHang) {
  test::ForEveryFlippedByte(test::MakeImHeaderFile(ThreeRecords()),
                            [](std::string_view harmed) { EXPECT_LE(Parse(harmed).size(), 20U); });
}

TEST(ImHeaderFile, LengthsAtAndBeyondTheEndEndTheList) {
  for (const uint32_t length : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU, 100U}) {
    ImBytes out;
    out.Unread(12);
    test::PutImRecord(&out, {1, L"a", L"b", L"c"});
    out.Byte(1).Unread(9).Guid(2).Text(L"a").Dword(length).Unread(60);
    EXPECT_EQ(IdsOf(Parse(out.Bytes())), Ids{ImGuid(1)}) << length;
  }
}

// A text of a record that is passed over leads as far as its length says, without any test.
TEST(ImHeaderFile, LengthsInARecordThatIsPassedOverAreBelieved) {
  ImBytes out;
  out.Unread(12);
  out.Byte(2).Unread(9).Guid(9).Dword(0xFFFFFFFF).Unread(60);
  test::PutImRecord(&out, {1, L"a", L"b", L"c"});
  EXPECT_TRUE(Parse(out.Bytes()).empty());
}

}  // namespace
}  // namespace postmarker
