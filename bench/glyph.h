#pragma once

#include "tests/support/outlines.h"

namespace bench {

inline constexpr const char* kSerifBold = "/usr/share/fonts/truetype/dejavu/DejaVuSerif-Bold.ttf";

/// A character of a font file, `size` pixels to the em, its origin at (x, y); no entries when the font is not installed.
support::Outline Glyph(const char* font_file, char32_t character, double x, double y, double size);

}  // namespace bench
