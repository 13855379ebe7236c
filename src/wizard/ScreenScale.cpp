#include "wizard/ScreenScale.h"

#include <array>

namespace postmarker {
namespace {

struct ScaleRow {
  int below;  // the row holds for fewer pixels per inch than this
  ScreenScale scale;
};

constexpr std::array<ScaleRow, 6> kRows = {{
    {104, {1.0, 1.0}},
    {113, {7.0 / 6.0, 14.0 / 13.0}},
    {122, {7.0 / 6.0, 16.0 / 13.0}},
    {131, {4.0 / 3.0, 17.0 / 13.0}},
    {140, {4.0 / 3.0, 18.0 / 13.0}},
    {147, {1.5, 19.0 / 13.0}},
}};

}  // namespace

ScreenScale ScaleForPixelsPerInch(int pixelsPerInch) {
  for (const ScaleRow& row : kRows) {
    if (pixelsPerInch < row.below) {
      return row.scale;
    }
  }
  const double factor = pixelsPerInch / 96.0;
  return {factor, factor};
}

}  // namespace postmarker
