// Word wrap of labels: where each piece of text, each rule and each link has its place.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "controls/LabelMarkup.h"
#include "controls/LabelSurface.h"

namespace postmarker {

// The part of a run that stands on one line.
struct LabelPiece {
  size_t item = 0;   // index in LabelMarkup::items
  size_t begin = 0;  // in LabelMarkup::text
  size_t end = 0;
  LabelRect place;
  int extra = 0;  // pixels that are spread over the blanks within
  int blanks = 0;
};

struct LabelRule {
  LabelRect place;
  std::optional<uint32_t> color;  // none: the control's
};

// One rectangle of a link. A link has one for each of its pieces.
struct LabelLinkPlace {
  LabelRect place;
  size_t link = 0;  // index in LabelMarkup::links
};

struct LabelLayout {
  std::vector<LabelPiece> pieces;  // from the top
  std::vector<LabelRule> rules;
  std::vector<LabelLinkPlace> links;  // in the order of the text
  int height = 0;
};

// Where a label is laid out, in pixels of the surface.
struct LabelArea {
  int width = 0;
  int leftMargin = 0;
  int rightMargin = 0;
  int lineSpacing = 0;  // between two lines
  bool wrap = true;
};

// Lays a text out. Lines break at blanks, and a word does not end where its style changes. What
// lies too far down for any device is left out. Time and memory are linear in the length of the
// text.
LabelLayout LayOutLabel(const LabelMarkup& markup, const LabelArea& area, LabelSurface* surface);

// Draws what lies within `clip`. `color` is that of texts and rules without one of their own.
void DrawLabel(const LabelMarkup& markup, const LabelLayout& layout, const LabelRect& clip,
               uint32_t color, LabelSurface* surface);

// The link at a point, or kNoLink.
size_t LabelLinkAt(const LabelLayout& layout, int x, int y);

// The links that can be seen, in the order of the text.
std::vector<size_t> VisibleLabelLinks(const LabelLayout& layout);

}  // namespace postmarker
