#include "bench/glyph.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <memory>

namespace bench {
namespace {

using refhost::Point;
using support::Outline;

/// What the decomposing callbacks write to.
struct Pen {
    Outline outline;
    double x, y, scale;
    Point at{};

    Point Place(const FT_Vector* p) const {
        return {x + scale * static_cast<double>(p->x), y - scale * static_cast<double>(p->y)};
    }
    int CurveTo(Point control1, Point control2, Point end) {
        outline.Curve(control1.x, control1.y, control2.x, control2.y, end.x, end.y);
        at = end;
        return 0;
    }
};

int MoveTo(const FT_Vector* to, void* user) {
    Pen& pen = *static_cast<Pen*>(user);
    pen.at = pen.Place(to);
    pen.outline.Move(pen.at.x, pen.at.y);
    return 0;
}

int LineTo(const FT_Vector* to, void* user) {
    Pen& pen = *static_cast<Pen*>(user);
    pen.at = pen.Place(to);
    pen.outline.Line(pen.at.x, pen.at.y);
    return 0;
}

int QuadraticTo(const FT_Vector* control, const FT_Vector* to, void* user) {
    Pen& pen = *static_cast<Pen*>(user);
    const Point middle = pen.Place(control);
    const Point end = pen.Place(to);
    const auto third = [&](Point p) { return Point{(p.x + 2 * middle.x) / 3, (p.y + 2 * middle.y) / 3}; };
    return pen.CurveTo(third(pen.at), third(end), end);
}

int CubicTo(const FT_Vector* control1, const FT_Vector* control2, const FT_Vector* to, void* user) {
    Pen& pen = *static_cast<Pen*>(user);
    return pen.CurveTo(pen.Place(control1), pen.Place(control2), pen.Place(to));
}

}  // namespace

Outline Glyph(const char* font_file, char32_t character, double x, double y, double size) {
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) return {};
    const std::unique_ptr<FT_LibraryRec_, decltype(&FT_Done_FreeType)> library_owner(library, &FT_Done_FreeType);
    FT_Face face = nullptr;
    if (FT_New_Face(library, font_file, 0, &face) != 0) return {};
    const std::unique_ptr<FT_FaceRec_, decltype(&FT_Done_Face)> face_owner(face, &FT_Done_Face);
    if (FT_Load_Char(face, character, FT_LOAD_NO_SCALE) != 0) return {};
    Pen pen{{}, x, y, size / face->units_per_EM};
    const FT_Outline_Funcs callbacks{&MoveTo, &LineTo, &QuadraticTo, &CubicTo, 0, 0};
    FT_Outline_Decompose(&face->glyph->outline, &callbacks, &pen);
    return pen.outline;
}

}  // namespace bench
