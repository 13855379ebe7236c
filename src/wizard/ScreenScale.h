// How sizes given for 96 pixels per inch are scaled to the screen's resolution.
#pragma once

namespace postmarker {

struct ScreenScale {
  double horizontal = 1.0;
  double vertical = 1.0;

  // A width or height in pixels of this screen; cut, not rounded.
  [[nodiscard]] int Width(int pixels) const { return static_cast<int>(pixels * horizontal); }
  [[nodiscard]] int Height(int pixels) const { return static_cast<int>(pixels * vertical); }
};

// The factors for a number of logical pixels per inch. The steps between 104 and 146 follow the
// growth of the dialog font, which is not the same in both directions.
ScreenScale ScaleForPixelsPerInch(int pixelsPerInch);

}  // namespace postmarker
