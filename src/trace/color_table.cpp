#include "trace/color_table.h"

#include <cmath>
#include <tuple>

#include "base/errors.h"
#include "base/narrow.h"
#include "base/of_thread.h"

namespace {

// Below this the cube root of the colour space gives way to a straight line.
constexpr float kLinearPart = 0.008856F;

RPLab LabOf(const RPSample& colour);
float Compressed(float t);

}  // namespace

RPColorTable& RPColorTable::OfThread() { return ::OfThread<RPColorTable>(); }

void RPColorTable::Reset() { *this = {}; }

std::uint8_t RPColorTable::IndexOf(const RPSample& colour) {
    if (frozen_) throw kBrokenInvariant;
    if (colour.model != kModelThree) throw kUnsupportedKind;
    const auto found = known_.find(colour);
    if (found != known_.end()) return found->second.index;
    known_.insert({colour, {next_index_, LabOf(colour)}});
    return next_index_++;
}

void RPColorTable::Freeze(std::int32_t model, bool second_kind) {
    model_ = model;
    second_kind_ = second_kind;
    for (const auto& [colour, entry] : known_) {
        if (entry.index >= palette_.size()) palette_.resize(std::size_t{entry.index} + 1);
        palette_[entry.index] = {colour, entry.lab};
        by_lab_[entry.lab] = entry.index;
    }
    frozen_ = true;
}

const RPPaletteEntry& RPColorTable::Entry(std::uint8_t index) const {
    if (!frozen_ || index >= palette_.size()) throw kBrokenInvariant;
    return palette_[index];
}

std::uint8_t RPColorTable::IndexOfLab(const RPLab& lab) const {
    const auto found = by_lab_.find(lab);
    if (found == by_lab_.end()) throw kBrokenInvariant;
    return found->second;
}

bool RPColorTable::ColourOrder::operator()(const RPSample& a, const RPSample& b) const {
    return std::tie(a.model, a.components[0], a.components[1], a.components[2]) <
           std::tie(b.model, b.components[0], b.components[1], b.components[2]);
}

bool RPColorTable::LabOrder::operator()(const RPLab& a, const RPLab& b) const {
    return std::tie(a.l, a.a, a.b) < std::tie(b.l, b.a, b.b);
}

namespace {

RPLab LabOf(const RPSample& colour) {
    const float red = static_cast<float>(colour.components[0]) / 255.0F;
    const float green = static_cast<float>(colour.components[1]) / 255.0F;
    const float blue = static_cast<float>(colour.components[2]) / 255.0F;
    const float x = (0.3935F * red + 0.3653F * green + 0.1916F * blue) / 0.9642F;
    const float y = 0.2124F * red + 0.7011F * green + 0.0865F * blue;
    const float z = (0.0187F * red + 0.1119F * green + 0.9582F * blue) / 0.8249F;
    const float l = y > kLinearPart ? 116.0F * Compressed(y) - 16.0F : 903.3F * y;
    return {l, 500.0F * (Compressed(x) - Compressed(y)), 200.0F * (Compressed(y) - Compressed(z))};
}

float Compressed(float t) {
    if (t > kLinearPart) return NarrowToFloat(std::pow(static_cast<double>(t), static_cast<double>(0.33333334F)));
    return 7.787F * t + 0.13793103F;
}

}  // namespace
