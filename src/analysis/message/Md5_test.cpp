#include "analysis/message/Md5.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

TEST(Md5, GivesTheKnownDigests) {
  EXPECT_EQ(Md5Text(""), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(Md5Text("abc"), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(Md5, StartForgetsWhatWasAdded) {
  Md5 md5;
  md5.Start();
  md5.Add("x");
  md5.Start();
  md5.Add("a");
  md5.Add("");
  md5.Add("bc");
  EXPECT_EQ(DigestText(md5.Finish()), Md5Text("abc"));
}

}  // namespace
}  // namespace postmarker
