#include "wizard/ScreenScale.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

struct ScaleCase {
  int pixelsPerInch;
  double horizontal;
  double vertical;
};

class ScreenScaleTest : public testing::TestWithParam<ScaleCase> {};

TEST_P(ScreenScaleTest, FactorsOfResolution) {
  const ScreenScale scale = ScaleForPixelsPerInch(GetParam().pixelsPerInch);
  EXPECT_DOUBLE_EQ(scale.horizontal, GetParam().horizontal);
  EXPECT_DOUBLE_EQ(scale.vertical, GetParam().vertical);
}

INSTANTIATE_TEST_SUITE_P(
    EdgesOfEachStep, ScreenScaleTest,
    testing::Values(ScaleCase{72, 1.0, 1.0}, ScaleCase{96, 1.0, 1.0}, ScaleCase{103, 1.0, 1.0},
                    ScaleCase{104, 7.0 / 6, 14.0 / 13}, ScaleCase{112, 7.0 / 6, 14.0 / 13},
                    ScaleCase{113, 7.0 / 6, 16.0 / 13}, ScaleCase{120, 7.0 / 6, 16.0 / 13},
                    ScaleCase{121, 7.0 / 6, 16.0 / 13}, ScaleCase{122, 4.0 / 3, 17.0 / 13},
                    ScaleCase{130, 4.0 / 3, 17.0 / 13}, ScaleCase{131, 4.0 / 3, 18.0 / 13},
                    ScaleCase{139, 4.0 / 3, 18.0 / 13}, ScaleCase{140, 1.5, 19.0 / 13},
                    ScaleCase{146, 1.5, 19.0 / 13}, ScaleCase{147, 147.0 / 96, 147.0 / 96},
                    ScaleCase{192, 2.0, 2.0}));

TEST(ScreenScale, SizesAreCutNotRounded) {
  const ScreenScale scale = ScaleForPixelsPerInch(120);
  EXPECT_EQ(scale.Width(95), 110);   // 110.83
  EXPECT_EQ(scale.Height(95), 116);  // 116.92
}

}  // namespace
}  // namespace postmarker
