#pragma once

#include <optional>
#include <pugixml.hpp>
#include <string_view>

#include "tool/svg_transform.h"

namespace vrltool {

/// The rectangle that percentages in an SVG element refer to, in user units.
struct SvgViewport {
    double width, height;

    /// What 100% means for a length that is neither horizontal nor vertical, such as a circle's radius.
    double Diagonal() const;
};

/// The attributes of one SVG element, read with their defaults.
/// @throws Failure  from every reader, with the attribute's name and what is wrong
class SvgAttributes {
 public:
    SvgAttributes(const pugi::xml_node& element, const SvgViewport& viewport) : element_(element), viewport_(viewport) {}

    std::string_view Text(const char* name) const { return element_.attribute(name).value(); }
    bool Has(const char* name) const { return !element_.attribute(name).empty(); }

    // Lengths in user units; 0 when missing. An "auto" length counts as missing.
    double Horizontal(const char* name) const { return Length(name, viewport_.width).value_or(0); }
    double Vertical(const char* name) const { return Length(name, viewport_.height).value_or(0); }
    /// A size, which must not be negative; no value when missing.
    std::optional<double> Size(const char* name, double whole) const;

    Affine Transform() const;
    std::optional<ViewBox> Box() const;
    Affine Fit(const ViewBox& box, double width, double height) const;

    /// A property that stands in the `style` attribute or, failing that, in an attribute of its own; else empty.
    std::string_view Property(const char* name) const;

    const SvgViewport& Viewport() const { return viewport_; }

 private:
    std::optional<double> Length(const char* name, double whole) const;

    pugi::xml_node element_;
    SvgViewport viewport_;
};

}  // namespace vrltool
