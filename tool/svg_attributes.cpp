#include "tool/svg_attributes.h"

#include <cmath>
#include <numbers>
#include <string>

#include "tool/failure.h"
#include "tool/svg_length.h"

namespace vrltool {
namespace {

/// The result of `read`; a complaint of it gets the attribute's name.
template <class Read>
auto Named(const char* attribute, Read read) {
    try {
        return read();
    } catch (const Failure& failure) {
        throw Failure(std::string(attribute) + ": " + failure.what());
    }
}

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kSpaces = " \t\r\n\f";
    const std::size_t first = text.find_first_not_of(kSpaces);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

}  // namespace

double SvgViewport::Diagonal() const { return std::hypot(width, height) / std::numbers::sqrt2; }

std::optional<double> SvgAttributes::Length(const char* name, double whole) const {
    const std::string_view text = Trimmed(Text(name));
    if (text.empty() || text == "auto") return std::nullopt;
    return Named(name, [&] { return ParseLength(text, whole); });
}

std::optional<double> SvgAttributes::Size(const char* name, double whole) const {
    const std::optional<double> size = Length(name, whole);
    if (size && *size < 0) throw Failure(std::string(name) + ": must not be negative");
    return size;
}

Affine SvgAttributes::Transform() const {
    return Named("transform", [&] { return ParseTransform(Text("transform")); });
}

std::optional<ViewBox> SvgAttributes::Box() const {
    if (!Has("viewBox")) return std::nullopt;
    return Named("viewBox", [&] { return ParseViewBox(Text("viewBox")); });
}

Affine SvgAttributes::Fit(const ViewBox& box, double width, double height) const {
    constexpr const char* kName = "preserveAspectRatio";
    return Named(kName, [&] { return FitViewBox(box, width, height, Text(kName)); });
}

std::string_view SvgAttributes::Property(const char* name) const {
    std::string_view style = Text("style");
    while (!style.empty()) {
        const std::string_view declaration = style.substr(0, style.find(';'));
        style.remove_prefix(std::min(style.size(), declaration.size() + 1));
        const std::size_t colon = declaration.find(':');
        if (colon != std::string_view::npos && Trimmed(declaration.substr(0, colon)) == name) {
            return Trimmed(declaration.substr(colon + 1));
        }
    }
    return Trimmed(Text(name));
}

}  // namespace vrltool
