#include "JsonWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace postmarker::inspect {
namespace {

class JsonWriterTest : public testing::Test {
 protected:
  // The document that was written last.
  std::string Take() {
    json.EndDocument();
    return std::exchange(printed, std::string());
  }

  std::string printed;
  size_t pieces = 0;
  const Print print = [this](std::string_view text) {
    printed.append(text);
    ++pieces;
  };
  JsonWriter json{print};
};

TEST_F(JsonWriterTest, PutsCommasWhereTheyBelong) {
  json.BeginObject().Key("a").Number(-1).Key("b").BeginArray().Bool(true).Bool(false);
  json.BeginObject().EndObject().EndArray().Key("c").BeginObject().EndObject().EndObject();
  EXPECT_EQ(Take(), "{\"a\":-1,\"b\":[true,false,{}],\"c\":{}}\n");
  json.BeginArray().EndArray();
  EXPECT_EQ(Take(), "[]\n");
}

TEST_F(JsonWriterTest, WritesBytesAsTheirCharacters) {
  json.Narrow(std::string_view("a\"\\\n\0\x7F\xE9", 7));
  EXPECT_EQ(Take(), "\"a\\\"\\\\\\u000a\\u0000\\u007f\\u00e9\"\n");
}

TEST_F(JsonWriterTest, WritesUnits) {
  const std::wstring units = {L'a', static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00),
                              static_cast<wchar_t>(0x20AC)};
  json.Wide(units);
  EXPECT_EQ(Take(), "\"a\\ud83d\\ude00\\u20ac\"\n");
}

TEST_F(JsonWriterTest, PrintsLargeDocumentsInPieces) {
  json.BeginArray();
  for (int i = 0; i < 2; ++i) {
    json.Narrow(std::string(100000, '\n'));
  }
  json.EndArray();
  EXPECT_GT(pieces, 4U);
  std::string text = "\"";
  for (int i = 0; i < 100000; ++i) {
    text.append("\\u000a");
  }
  text.append("\"");
  EXPECT_EQ(Take(), "[" + text + "," + text + "]\n");
}

}  // namespace
}  // namespace postmarker::inspect
