#pragma once

#include <optional>
#include <string_view>

#include "host/geometry_records.h"
#include "host/image.h"

namespace vrltool {

/// How a mask joins the ones before it. In samples of a full level max, total a and mask b:
enum class CombineMode {
    kAdd,         // min(a + b, max)
    kSubtract,    // max(a - b, 0)
    kIntersect,   // a * b / max, rounded to nearest
    kLighten,     // the larger one
    kDarken,      // the smaller one
    kDifference,  // |a - b|
};

/// The modes' names as the files and options spell them, in the order above.
inline constexpr const char* kCombineNames[] = {"add", "subtract", "intersect", "lighten", "darken", "difference"};

std::optional<CombineMode> CombineModeNamed(std::string_view name);
const char* NameOf(CombineMode mode);

/// Makes the first mask the total. What there was before it is what makes the mode useful: nothing for add, lighten and
/// difference, everything for subtract, intersect and darken. So only subtract changes the buffer, to its complement.
void StartTotal(CombineMode mode, GW_UnoBuffer& first);

/// Joins `mask` to `total`; both have the same size and depth. The mask counts as 0 outside of `touched`, a rectangle in it.
void Combine(CombineMode mode, const GW_UnoBuffer& mask, const M_LRect& touched, GW_UnoBuffer& total);

}  // namespace vrltool
