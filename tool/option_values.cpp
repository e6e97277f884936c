#include "tool/option_values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "base/fixed16.h"
#include "tool/standard_stream.h"

namespace vrltool {
namespace {

[[noreturn]] void Refuse(const std::string& text, const std::string& wanted) {
    throw CLI::ValidationError('"' + text + "\" is not " + wanted);
}

/// The finite number that is all of the text; no value for anything else.
template <class Number>
std::optional<Number> NumberIn(std::string_view text) {
    Number value{};
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(static_cast<double>(value))) return std::nullopt;
    return value;
}

std::vector<std::string_view> SplitAtCommas(std::string_view text) {
    std::vector<std::string_view> parts;
    for (std::size_t comma = text.find(','); comma != std::string_view::npos; comma = text.find(',')) {
        parts.push_back(text.substr(0, comma));
        text.remove_prefix(comma + 1);
    }
    parts.push_back(text);
    return parts;
}

/// The comma-separated numbers of `text`; none when one of them is no number.
std::vector<double> NumberList(std::string_view text) {
    std::vector<double> numbers;
    for (const std::string_view part : SplitAtCommas(text)) {
        const std::optional<double> number = NumberIn<double>(part);
        if (!number) return {};
        numbers.push_back(*number);
    }
    return numbers;
}

/// 0 for anything that is not a side's length.
std::int32_t ParseSide(std::string_view text) {
    const std::int32_t side = NumberIn<std::int32_t>(text).value_or(0);
    return side >= 1 && side <= kMaxSide ? side : 0;
}

}  // namespace

PixelSize ParseSize(const std::string& text) {
    const std::size_t cross = std::min(text.find('x'), text.size());
    const std::int32_t width = ParseSide(std::string_view(text).substr(0, cross));
    const std::int32_t height = ParseSide(std::string_view(text).substr(std::min(cross + 1, text.size())));
    if (width == 0 || height == 0) Refuse(text, "a size WxH of 1 to " + std::to_string(kMaxSide) + " pixels each way");
    return {width, height};
}

double ParseNumber(const std::string& text, double low, double high) {
    const std::optional<double> number = NumberIn<double>(text);
    if (!number || *number < low || *number > high) {
        Refuse(text, "a number from " + CLI::detail::to_string(low) + " to " + CLI::detail::to_string(high));
    }
    return *number;
}

std::int32_t ParseWhole(const std::string& text, std::int32_t low, std::int32_t high) {
    const std::optional<std::int32_t> number = NumberIn<std::int32_t>(text);
    if (!number || *number < low || *number > high) {
        Refuse(text, "a whole number from " + std::to_string(low) + " to " + std::to_string(high));
    }
    return *number;
}

M_Vector2T<double> ParseRadii(const std::string& text) {
    const std::vector<double> radii = NumberList(text);
    if (radii.empty() || radii.size() > 2) Refuse(text, "one or two numbers, X or X,Y");
    for (const double radius : radii) {
        if (radius < 0 || radius > kMaxSide) Refuse(text, "a radius from 0 to " + std::to_string(kMaxSide) + " pixels");
    }
    return {radii.front(), radii.back()};
}

M_Matrix3 ParseMatrix(const std::string& text) {
    const std::vector<double> v = NumberList(text);
    if (v.size() != 6) Refuse(text, "six numbers, a,b,c,d,tx,ty");
    return {{{v[0], v[1], 0}, {v[2], v[3], 0}, {v[4], v[5], 1}}};
}

std::string ParseOutputName(const std::string& text) {
    if (text.empty()) throw CLI::ValidationError("the name of the file is empty");
    return text == "/dev/stdout" ? kStandardStream : text;
}

std::string EndingOf(const std::string& path) { return CLI::detail::to_lower(std::filesystem::path(path).extension().string()); }

void AddPngOutput(CLI::App& command, std::string& output) {
    AddValue(command, "-o,--output", "FILE", "PNG file to write, - for standard output", [&output](const std::string& text) {
        output = ParseOutputName(text);
        const std::string ending = EndingOf(output);
        if (!ending.empty() && ending != ".png") throw CLI::ValidationError('"' + text + "\" does not end in .png");
    })->required();
}

void AddAspect(CLI::App& command, double& aspect) {
    AddValue(command, "--aspect", "R", "pixel aspect ratio: outlines move R times as far sideways",
             [&aspect](const std::string& text) { aspect = ParseNumber(text, 0.01, 100); })
        ->default_str("1");
}

std::int32_t ToFixed(double value) { return static_cast<std::int32_t>(std::lround(value * kFixedOne)); }

}  // namespace vrltool
