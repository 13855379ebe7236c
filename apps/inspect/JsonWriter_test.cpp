#include "JsonWriter.h"

#include <gtest/gtest.h>

namespace postmarker::inspect {
namespace {

TEST(JsonWriter, PutsCommasWhereTheyBelong) {
  JsonWriter json;
  json.BeginObject().Key("a").Number(-1).Key("b").BeginArray().Bool(true).Bool(false);
  json.BeginObject().EndObject().EndArray().Key("c").BeginObject().EndObject().EndObject();
  EXPECT_EQ(json.Take(), R"({"a":-1,"b":[true,false,{}],"c":{}})");
  json.BeginArray().EndArray();
  EXPECT_EQ(json.Take(), "[]");
}

TEST(JsonWriter, WritesBytesAsTheirCharacters) {
  JsonWriter json;
  json.Narrow(std::string_view("a\"\\\n\0\x7F\xE9", 7));
  EXPECT_EQ(json.Take(), R"("a\"\\\u000a\u0000\u007f\u00e9")");
}

TEST(JsonWriter, WritesUnits) {
  JsonWriter json;
  const std::wstring units = {L'a', static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00),
                              static_cast<wchar_t>(0x20AC)};
  json.Wide(units);
  EXPECT_EQ(json.Take(), R"("a\ud83d\ude00\u20ac")");
}

}  // namespace
}  // namespace postmarker::inspect
