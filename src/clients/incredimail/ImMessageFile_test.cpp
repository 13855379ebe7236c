#include "clients/incredimail/ImMessageFile.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "clients/incredimail/ImAttachmentName.h"
#include "support/ImOlderStore.h"
#include "support/ImPlainReaders.h"

namespace postmarker {
namespace {

constexpr std::string_view kMarker = test::kImMarker;

// Attachments by name, and the names that were asked for.
class MapAttachments : public ImAttachments {
 public:
  std::map<std::string, std::string, std::less<>> contents;
  std::vector<std::string> asked;

  std::optional<std::string_view> Open(std::string_view name) override {
    asked.emplace_back(name);
    const auto found = contents.find(name);
    return found == contents.end() ? std::nullopt : std::optional<std::string_view>(found->second);
  }
};

std::string Concat(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) {
    text += part;
  }
  return text;
}

std::string Repeat(std::string_view piece, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    text += piece;
  }
  return text;
}

class ImMessageFileTest : public testing::Test {
 protected:
  // The message at `place` of a file.
  std::string At(std::string_view file, ImMessagePlace place) {
    const ImMessage message = AssembleMessage(file, place, &m_attachments);
    EXPECT_NE(message.buffer, nullptr);
    EXPECT_EQ(message.buffer[message.length], '\0');
    test::PlainAssembler plain(
        file, place.msgSize, place.lightMsgSize, place.msgPos, [this](const std::string& name) {
          const auto found = m_attachments.contents.find(name);
          return found == m_attachments.contents.end() ? nullptr : &found->second;
        });
    std::string bytes(message.Bytes());
    EXPECT_EQ(bytes, plain.Assemble());
    return bytes;
  }

  // A message that is all of its file, with room for what is added.
  std::string Of(std::string_view message, uint32_t room = 0) {
    const auto size = static_cast<uint32_t>(message.size());
    return At(message, {size + room, size, 0});
  }

  MapAttachments m_attachments;
};

TEST_F(ImMessageFileTest, MessageWithWholeLineEndsIsCopied) {
  const std::string message = "From: a@b\r\n\r\nHello - and -- and ---------- bye\r\n";
  EXPECT_EQ(Of(message), message);
}

TEST_F(ImMessageFileTest, MessageIsTakenFromItsPlace) {
  EXPECT_EQ(At("first\r\nsecond\r\nthird", {8, 8, 7}), "second\r\n");
}

TEST_F(ImMessageFileTest, LightSizeAboveWhatTheFileHoldsIsCutToTheFilesEnd) {
  EXPECT_EQ(At("first\r\nsecond", {100, 100, 7}), "second");
  EXPECT_EQ(At("first\r\nsecond", {0xFFFFFFFF, 0xFFFFFFFF, 7}), "second");
}

TEST_F(ImMessageFileTest, MessageAtOrBehindTheFilesEndIsEmpty) {
  for (const uint32_t place : {5U, 6U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    EXPECT_EQ(At("abcde", {10, 10, place}), "");
  }
}

TEST_F(ImMessageFileTest, BareLineFeedsGetCarriageReturns) {
  EXPECT_EQ(Of("a\nb\r\nc\n\nd"), "a\r\nb\r\nc\r\n\r\nd");
}

TEST_F(ImMessageFileTest, LineFeedAtTheVeryFirstByteGetsNoCarriageReturn) {
  EXPECT_EQ(Of("\na\n"), "\na\r\n");
  EXPECT_EQ(Of("\n\n"), "\n\r\n");
}

TEST_F(ImMessageFileTest, After4096AddedCarriageReturnsTheOtherLineFeedsStayBare) {
  const std::string text = Repeat("x\n", 4100);
  EXPECT_EQ(Of(text), Repeat("x\r\n", 4096) + Repeat("x\n", 4));
  EXPECT_EQ(Of("y" + Repeat("\n", 5000)), "y" + Repeat("\r\n", 4096) + Repeat("\n", 904));
}

TEST_F(ImMessageFileTest, SizeOfZeroHasRoomFor4096Bytes) {
  const std::string text(6000, 'x');
  EXPECT_EQ(At(text, {0, 0, 0}), "");
  EXPECT_EQ(At(text, {0, 6000, 0}), std::string(4096, 'x'));
  EXPECT_EQ(At(text, {1000, 6000, 0}), std::string(5096, 'x'));
  EXPECT_EQ(At(text, {0, 3000, 0}), std::string(3000, 'x'));
}

TEST_F(ImMessageFileTest, AddedCarriageReturnsThatDoNotFitPushTheEndOut) {
  const std::string text = Repeat("x\n", 2500);
  EXPECT_EQ(At(text, {0, 5000, 0}), Repeat("x\r\n", 2500).substr(0, 4096));
}

// Lines of a part with an attachment, and the text after it.
std::string PartOf(std::string_view encoding, std::string_view lineEnd = "\r\n",
                   std::string_view name = "file.bin") {
  return Concat({"Head: x\r\n\r\n--b\r\n", encoding, "\r\n", kMarker, name, lineEnd,
                 "behind the attachment, for more bytes than a marker has\r\n--b--\r\n"});
}

TEST_F(ImMessageFileTest, AttachmentStandsInThePlaceOfItsLine) {
  m_attachments.contents["file.bin"] = "CONTENT";
  const std::string out = Of(PartOf("X: y\r\n"), 7);
  EXPECT_TRUE(out.starts_with("Head: x\r\n\r\n--b\r\nX: y\r\n\r\nCONTENT\r\nbehind the"));
  EXPECT_EQ(m_attachments.asked, std::vector<std::string>{"file.bin"});
}

// One byte for each line with an attachment comes from beyond the message.
TEST_F(ImMessageFileTest, MessageIsOneByteLongerForEachAttachment) {
  m_attachments.contents["a"] = "A";
  const std::string message = Concat({"x\r\n", kMarker, "a\r\n", std::string(40, 'y'), "\r\n"});
  const auto size = static_cast<uint32_t>(message.size());
  const std::string rebuilt = "x\r\nA\r\n" + std::string(40, 'y') + "\r\n";
  EXPECT_EQ(At(message + "NEXT", {size, size, 0}), rebuilt + "N");
  EXPECT_EQ(At(message, {size, size, 0}), rebuilt + std::string(1, '\0'));
  const std::string two = Concat({kMarker, "a\r\n", kMarker, "a\r\n", std::string(80, 'y')});
  EXPECT_EQ(At(two + "NEXT", {200, static_cast<uint32_t>(two.size()), 0}),
            "A\r\nA\r\n" + std::string(80, 'y') + "NE");
}

TEST_F(ImMessageFileTest, LineFeedThatEndsANameGoesWithIt) {
  m_attachments.contents["file.bin"] = "CONTENT";
  EXPECT_TRUE(Of(PartOf("X: y\r\n", "\n"), 7)
                  .starts_with("Head: x\r\n\r\n--b\r\nX: y\r\n\r\nCONTENTbehind the"));
}

TEST_F(ImMessageFileTest, MarkerIsFoundWhateverItsCase) {
  m_attachments.contents["a"] = "A";
  EXPECT_TRUE(Of(Concat({"----------[%imfilepath%]----------a\r\n", std::string(60, 'y')}))
                  .starts_with("A\r\nyyy"));
}

TEST_F(ImMessageFileTest, MarkerBehindFurtherHyphensIsFound) {
  m_attachments.contents["a"] = "A";
  EXPECT_TRUE(Of(Concat({"---", kMarker, "a\r\n", std::string(60, 'y')})).starts_with("---A\r\ny"));
}

TEST_F(ImMessageFileTest, MarkerWithinTheLast34BytesIsPlainText) {
  m_attachments.contents["a"] = "A";
  const std::string atEnd = Concat({"text\r\n", kMarker});
  EXPECT_EQ(Of(atEnd), atEnd);
  EXPECT_TRUE(m_attachments.asked.empty());
  // One byte more, which is the name.
  EXPECT_EQ(At(atEnd + "a\r\n", {41, 41, 0}), "text\r\nA\r");
}

// The marker's bytes do not count as read, so a name may be looked for that far after the message.
TEST_F(ImMessageFileTest, NameOfTheLastLineRunsOnBehindTheMessage) {
  m_attachments.contents["namexyz"] = "CONTENT";
  const std::string message = Concat({"text\r\n", kMarker, "name"});
  const auto size = static_cast<uint32_t>(message.size());
  EXPECT_EQ(At(message + "xyz\r\n", {size + 100, size, 0}), "text\r\nCONTE");
  m_attachments.asked.clear();
  At(message + std::string(100, 'x'), {size + 100, size, 0});
  EXPECT_EQ(m_attachments.asked, std::vector<std::string>{"name" + std::string(34, 'x')});
}

TEST_F(ImMessageFileTest, NameEndsAtItsFirstNul) {
  m_attachments.contents["a"] = "A";
  Of(Concat({kMarker, std::string_view("a\0b", 3), "\r\n", std::string(60, 'y')}));
  EXPECT_EQ(m_attachments.asked.front(), "a");
}

// Behind the file's end nothing is read: zeros, and no line end.
TEST_F(ImMessageFileTest, NameThatRunsIntoTheFilesEndEndsThere) {
  m_attachments.contents["aa"] = "A";
  // All that is left counts as the name: 36 bytes, of which two are there.
  EXPECT_EQ(Of(Concat({std::string(40, 'x'), kMarker, "aa"})), std::string(7, 'x'));
  EXPECT_EQ(m_attachments.asked, std::vector<std::string>{"aa"});
}

TEST_F(ImMessageFileTest, MissingAttachmentLeavesNothing) {
  EXPECT_TRUE(Of(PartOf("X: y\r\n")).starts_with("Head: x\r\n\r\n--b\r\nX: y\r\n\r\n\r\nbehind"));
}

TEST_F(ImMessageFileTest, MarkerAtTheVeryBeginningWithoutItsAttachment) {
  EXPECT_TRUE(Of(Concat({kMarker, "gone\r\n", std::string(60, 'y')})).starts_with("\r\nyyy"));
}

TEST_F(ImMessageFileTest, PartThatSaysSoIsEncoded) {
  m_attachments.contents["file.bin"] = "Many hands make light work.";
  for (const char* const header :
       {"Content-Transfer-Encoding: base64\r\n", "content-transfer-encoding:BASE64\r\n",
        "Content-Type: x/y\r\nContent-Transfer-Encoding:    Base64\r\nX: y\r\n"}) {
    EXPECT_NE(
        Of(PartOf(header), 100).find("\r\n\r\nTWFueSBoYW5kcyBtYWtlIGxpZ2h0IHdvcmsu\r\nbehind"),
        std::string::npos)
        << header;
  }
}

TEST_F(ImMessageFileTest, PartThatSaysOtherwiseIsNotEncoded) {
  m_attachments.contents["file.bin"] = "CONTENT";
  for (const char* const header :
       {"Content-Transfer-Encoding: 8bit\r\n", "Content-Transfer-Encoding:\tbase64\r\n",
        "Content-Transfer-Encoding: \"base64\"\r\n", "Transfer-Encoding: base64\r\n",
        "Content-Transfer-Encoding: 8bit\r\nContent-Transfer-Encoding: base64\r\n"}) {
    EXPECT_NE(Of(PartOf(header), 100).find("\r\n\r\nCONTENT\r\nbehind"), std::string::npos)
        << header;
  }
}

TEST_F(ImMessageFileTest, HeaderOfAnEarlierPartDoesNotCount) {
  m_attachments.contents["file.bin"] = "CONTENT";
  EXPECT_NE(Of("Content-Transfer-Encoding: base64\r\n" + PartOf("X: y\r\n"), 100).find("CONTENT"),
            std::string::npos);
}

TEST_F(ImMessageFileTest, WithoutAPairOfHyphensTheWholeMessageCounts) {
  m_attachments.contents["a"] = "Man";
  EXPECT_NE(Of(Concat({"Content-Transfer-Encoding: base64\r\n\r\n", kMarker, "a\r\n",
                       std::string(60, 'y')}),
               100)
                .find("\r\n\r\nTWFu\r\n"),
            std::string::npos);
}

TEST_F(ImMessageFileTest, BothHyphensOfThePairStandBeforeTheMarker) {
  m_attachments.contents["a"] = "Man";
  const std::string header = "Content-Transfer-Encoding: base64\r\n\r\n";
  const std::string rest = Concat({kMarker, "a\r\n", std::string(60, 'y')});
  // One hyphen and the marker's first are no pair; two are.
  EXPECT_NE(Of(header + "-" + rest, 100).find("-TWFu\r\n"), std::string::npos);
  EXPECT_NE(Of(header + "--" + rest, 100).find("--Man\r\n"), std::string::npos);
}

TEST_F(ImMessageFileTest, HeaderMustHaveRoomAheadOfTheMarker) {
  m_attachments.contents["a"] = "Man";
  const std::string rest = Concat({kMarker, "a\r\n", std::string(60, 'y')});
  EXPECT_NE(Of("Content-Transfer-Encoding:base64" + rest, 100).find("Man\r\n"), std::string::npos);
  EXPECT_NE(Of("Content-Transfer-Encoding:base64 " + rest, 100).find("TWFu\r\n"),
            std::string::npos);
  EXPECT_NE(Of("Content-Transfer-Encoding:" + rest, 100).find("Man\r\n"), std::string::npos);
  EXPECT_NE(Of("Content-Transfer-Encoding:   " + rest, 100).find("Man\r\n"), std::string::npos);
}

// 4,096 bytes above the size, the bytes of the marker's line given back.
TEST_F(ImMessageFileTest, AttachmentThatDoesNotFitIsLeftOut) {
  const std::string message = Concat({kMarker, "a\r\n", std::string(60, 'y')});
  const auto size = static_cast<uint32_t>(message.size());
  const size_t room = 4096 + 35 - 1;
  m_attachments.contents["a"] = std::string(room, 'A');
  EXPECT_EQ(At(message, {size, size, 0}).size(), size + 4096);
  m_attachments.contents["a"] += 'A';
  EXPECT_EQ(At(message, {size, size, 0}).size(), size - 34);
  EXPECT_EQ(At(message, {size + 1, size, 0}).size(), size + 4097);
}

TEST_F(ImMessageFileTest, EncodedAttachmentLongerThanTheRoomAddsNothing) {
  const std::string message =
      Concat({"Content-Transfer-Encoding: base64\r\n\r\n", kMarker, "a\r\n", std::string(60, 'y')});
  const auto size = static_cast<uint32_t>(message.size());
  // The room is 4,095 bytes: 1,023 groups of four.
  m_attachments.contents["a"] = std::string(3069, 'A');
  EXPECT_NE(At(message, {size, size, 0}).find("QUFB"), std::string::npos);
  m_attachments.contents["a"] = std::string(3070, 'A');
  const std::string without = At(message, {size, size, 0});
  EXPECT_EQ(without.size(), size - 34);
  EXPECT_EQ(without.find("QUFB"), std::string::npos);
  // A message that is longer than its size has no room at all.
  m_attachments.contents["a"] = "Man";
  EXPECT_EQ(At(message + std::string(4500, 'z'), {100, size + 4500, 0}).find("TWFu"),
            std::string::npos);
}

TEST_F(ImMessageFileTest, SecondAttachmentFitsWhereTheFirstDidNot) {
  const std::string message =
      Concat({kMarker, "big\r\n", kMarker, "small\r\n", std::string(100, 'y')});
  m_attachments.contents["big"] = std::string(5000, 'B');
  m_attachments.contents["small"] = std::string(4000, 'S');
  const std::string out = Of(message);
  EXPECT_EQ(out.find('B'), std::string::npos);
  EXPECT_NE(out.find(std::string(4000, 'S')), std::string::npos);
}

// Each marker takes 34 bytes off the length; what follows the message may hold further ones.
TEST_F(ImMessageFileTest, MoreMarkersThanTheMessageHasBytesGiveAnEmptyMessage) {
  const std::string file = Repeat(Concat({kMarker, "\r\n"}), 400);
  EXPECT_EQ(At(file, {400, 400, 0}), "");
}

TEST_F(ImMessageFileTest, LargestSizesTakeNoMoreMemoryThanTheMessage) {
  const std::string message = Concat({kMarker, "a\r\n", std::string(60, 'y')});
  m_attachments.contents["a"] = std::string(300'000, 'A');
  const ImMessage rebuilt = AssembleMessage(message, {0xFFFFFFFF, 0xFFFFFFFF, 0}, &m_attachments);
  EXPECT_EQ(rebuilt.length, 300'000U + message.size() - 34);
}

TEST_F(ImMessageFileTest, EveryCutOfAMessageEndsWell) {
  m_attachments.contents["file.bin"] = "Some content";
  const std::string message =
      "first\n" + PartOf("Content-Transfer-Encoding: base64\r\n") + PartOf("X: y\n", "\n");
  for (uint32_t size = 0; size <= message.size(); ++size) {
    At(message, {size, size, 0});
    At(std::string_view(message).substr(0, size), {4000, 4000, 3});
  }
}

TEST_F(ImMessageFileTest, RandomMessagesAreAsThePlainAssemblerHasThem) {
  m_attachments.contents = {
      {"a", "A"},    {"", "unnamed"}, {"b\tb", std::string(5000, 'b')},
      {"cr", "c\r"}, {"lf", "\n"},    {"marker", std::string(kMarker) + "a\r\n"}};
  const std::string pieces[] = {"\n",
                                "\r\n",
                                "\r",
                                "-",
                                "--",
                                "a",
                                "text ",
                                std::string(kMarker),
                                std::string(kMarker) + "a\r\n",
                                std::string(kMarker) + "b\tb\n",
                                std::string(kMarker) + "cr\r\n",
                                std::string(kMarker) + "lf\n",
                                std::string(kMarker) + "marker\r\n",
                                std::string(kMarker) + "\r\n",
                                "Content-Transfer-Encoding: base64\r\n",
                                std::string(1, '\0'),
                                std::string(40, 'x'),
                                std::string(300, '\n')};
  std::mt19937 random(2);
  const auto below = [&random](size_t bound) { return static_cast<size_t>(random() % bound); };
  for (int round = 0; round < 1000; ++round) {
    std::string file;
    for (size_t count = below(30); count > 0; --count) {
      file += pieces[below(std::size(pieces))];
    }
    const auto size = static_cast<uint32_t>(below(file.size() + 5));
    At(file, {static_cast<uint32_t>(below(3) == 0 ? below(9000) : size), size,
              static_cast<uint32_t>(below(3) == 0 ? below(file.size() + 9) : 0)});
  }
}

TEST(ImAttachmentName, NamesOfFilesInTheFolder) {
  for (const char* const name :
       {"photo.jpg", "a", "no extension", ".hidden", "a..b", "J\xFCrgen", "console.txt", "com.txt",
        "comx", "lpt10", "nul1", "x con", "...x"}) {
    EXPECT_TRUE(IsAttachmentName(name)) << name;
  }
  EXPECT_TRUE(IsAttachmentName(std::string(255, 'x')));
}

TEST(ImAttachmentName, NamesThatLeadElsewhere) {
  for (const char* const name :
       {"", ".", "..", "...", " ", ". .", "../x", "..\\x", "a/b", "a\\b", "/etc/passwd",
        "\\\\host\\x", "C:x", "C:\\x", "file:stream", "x/..", "..\\..\\Containers.db"}) {
    EXPECT_FALSE(IsAttachmentName(name)) << name;
  }
  EXPECT_FALSE(IsAttachmentName(std::string(256, 'x')));
}

TEST(ImAttachmentName, Devices) {
  for (const char* const name : {"con", "CON", "nul", "Nul.txt", "aux .x", "prn", "com1",
                                 "COM9.a.b", "lpt1", "conin$", "CONOUT$", "com\xB9"}) {
    EXPECT_FALSE(IsAttachmentName(name)) << name;
  }
}

class ImMessageOnDisk : public testing::Test {
 protected:
  // Rebuilds a message whose one attachment has this name.
  std::string With(std::string_view name) {
    const std::string message =
        Concat({"x\r\n", kMarker, name, "\r\n", std::string(60, 'y'), "\r\n"});
    test::WriteFile(m_store.StoreFile("In.imm"), message);
    ImHeader header;
    header.StorePath = m_store.StorePath();
    header.FileName = L"In";
    header.MsgSize = header.LightMsgSize = static_cast<uint32_t>(message.size());
    ImMessage rebuilt;
    EXPECT_EQ(AssembleMessage(header, &rebuilt), kOk);
    return std::string(rebuilt.Bytes());
  }

  test::TempFolder m_folder;
  test::ImIdentityFolder m_store{m_folder.Path() / "{1}"};
};

TEST_F(ImMessageOnDisk, AttachmentIsReadFromItsFolder) {
  test::WriteFile(m_store.Attachment("photo.jpg"), "PHOTO");
  EXPECT_TRUE(With("photo.jpg").starts_with("x\r\nPHOTO\r\ny"));
  test::WriteFile(m_store.StorePath() + L"Attachments/J\u00FCrgen \u20AC.txt", "NAME");
  EXPECT_TRUE(With("J\xFCrgen \x80.txt").starts_with("x\r\nNAME\r\ny"));
}

TEST_F(ImMessageOnDisk, EmptyAttachmentLeavesNothing) {
  test::WriteFile(m_store.Attachment("empty"), "");
  EXPECT_TRUE(With("empty").starts_with("x\r\n\r\ny"));
}

TEST_F(ImMessageOnDisk, NamesNeverReachOutsideTheAttachments) {
  test::WriteFile(m_store.StoreFile("secret"), "SECRET");
  test::WriteFile(m_folder.PathOf("secret"), "SECRET");
  std::filesystem::create_directories(m_store.Attachment("inner"));
  test::WriteFile(m_store.Attachment("inner") + L"/secret", "SECRET");
  const std::string absolute = m_folder.Path().string() + "/secret";
  for (const std::string& name :
       {std::string("../secret"), std::string("..\\secret"), std::string("inner/secret"),
        std::string("inner\\secret"), std::string("./../secret"), std::string("../../../secret"),
        std::string("inner/../../secret"), std::string(".."), std::string("inner"), absolute,
        std::string("..\\secret\0x", 11)}) {
    EXPECT_TRUE(With(name).starts_with("x\r\n\r\ny")) << name;
  }
}

TEST_F(ImMessageOnDisk, FileThatCanNotBeReadFails) {
  ImHeader header;
  header.StorePath = m_store.StorePath();
  header.FileName = L"Gone";
  ImMessage message;
  message.length = 5;
  EXPECT_EQ(AssembleMessage(header, &message), kFail);
  EXPECT_EQ(message.buffer, nullptr);
  EXPECT_EQ(message.length, 0U);
}

}  // namespace
}  // namespace postmarker
