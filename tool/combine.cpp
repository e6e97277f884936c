#include "tool/combine.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace vrltool {
namespace {

template <class P, class Operation>
void ForEachSample(const GW_UnoBuffer& mask, const M_LRect& rect, GW_UnoBuffer& total, Operation operation) {
    for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
        const P* const m = mask.Row<P>(y);
        P* const t = total.Row<P>(y);
        for (std::int32_t x = rect.left; x < rect.right; ++x)
            t[x] = static_cast<P>(operation(std::uint32_t{t[x]}, std::uint32_t{m[x]}));
    }
}

template <class P>
void CombineInside(CombineMode mode, const GW_UnoBuffer& mask, const M_LRect& rect, GW_UnoBuffer& total) {
    using Sample = std::uint32_t;
    static constexpr Sample kMax = SampleTraits<P>::kMax;
    switch (mode) {
        case CombineMode::kAdd:
            return ForEachSample<P>(mask, rect, total, [](Sample a, Sample b) { return std::min(a + b, kMax); });
        case CombineMode::kSubtract:
            return ForEachSample<P>(mask, rect, total, [](Sample a, Sample b) { return a > b ? a - b : 0; });
        case CombineMode::kIntersect:
            return ForEachSample<P>(mask, rect, total, [](Sample a, Sample b) { return (a * b + kMax / 2) / kMax; });
        case CombineMode::kLighten:
            return ForEachSample<P>(mask, rect, total, [](Sample a, Sample b) { return std::max(a, b); });
        case CombineMode::kDarken:
            return ForEachSample<P>(mask, rect, total, [](Sample a, Sample b) { return std::min(a, b); });
        case CombineMode::kDifference:
            return ForEachSample<P>(mask, rect, total, [](Sample a, Sample b) { return a > b ? a - b : b - a; });
    }
}

/// Where the mask is 0, these two leave nothing of the total and the others all of it.
bool ClearsWhereMaskIsNone(CombineMode mode) { return mode == CombineMode::kIntersect || mode == CombineMode::kDarken; }

template <class P>
void ClearOutside(const M_LRect& rect, GW_UnoBuffer& total) {
    for (std::int32_t y = 0; y < total.height; ++y) {
        P* const row = total.Row<P>(y);
        const bool crosses = y >= rect.top && y < rect.bottom && rect.left < rect.right;
        std::fill(row, row + (crosses ? rect.left : total.width), P{0});
        if (crosses) std::fill(row + rect.right, row + total.width, P{0});
    }
}

template <class P>
void CombineSamples(CombineMode mode, const GW_UnoBuffer& mask, const M_LRect& touched, GW_UnoBuffer& total) {
    CombineInside<P>(mode, mask, touched, total);
    if (ClearsWhereMaskIsNone(mode)) ClearOutside<P>(touched, total);
}

template <class P>
void Complement(GW_UnoBuffer& buffer) {
    const M_LRect whole = {0, 0, buffer.width, buffer.height};
    ForEachSample<P>(buffer, whole, buffer, [](std::uint32_t a, std::uint32_t) { return SampleTraits<P>::kMax - a; });
}

}  // namespace

std::optional<CombineMode> CombineModeNamed(std::string_view name) {
    const auto found = std::find(std::begin(kCombineNames), std::end(kCombineNames), name);
    if (found == std::end(kCombineNames)) return std::nullopt;
    return static_cast<CombineMode>(found - std::begin(kCombineNames));
}

const char* NameOf(CombineMode mode) { return kCombineNames[static_cast<int>(mode)]; }

void StartTotal(CombineMode mode, GW_UnoBuffer& first) {
    if (mode != CombineMode::kSubtract) return;
    first.IsDeep() ? Complement<GW_Pixel16>(first) : Complement<GW_Pixel8>(first);
}

void Combine(CombineMode mode, const GW_UnoBuffer& mask, const M_LRect& touched, GW_UnoBuffer& total) {
    total.IsDeep() ? CombineSamples<GW_Pixel16>(mode, mask, touched, total)
                   : CombineSamples<GW_Pixel8>(mode, mask, touched, total);
}

}  // namespace vrltool
