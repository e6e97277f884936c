#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Which diagonal pair of the four pixels round a corner belongs together although it only touches there.
enum RPJoin : std::uint8_t {
    kJoinNone = 0,
    kJoinUpRight = 1,  // up-right with down-left
    kJoinUpLeft = 2,   // up-left with down-right
};

/// A bitmap as one colour number a pixel inside a frame one pixel wide, so that every pixel has four neighbours. The frame
/// has the colour of the outside, which no pixel has.
class RPPixelMap {
 public:
    static constexpr std::uint8_t kOutside = 255;

    RPPixelMap(std::int32_t width, std::int32_t height);

    std::int32_t Width() const { return width_; }
    std::int32_t Height() const { return height_; }
    std::ptrdiff_t Stride() const { return width_ + 2; }  // from a pixel to the one below

    /// The pixels of row `y`, -1 to Height(); the pixels before the first and past the last are of the frame.
    std::uint8_t* Row(std::int32_t y) { return pixels_.data() + (y + 1) * Stride() + 1; }
    const std::uint8_t* Row(std::int32_t y) const { return pixels_.data() + (y + 1) * Stride() + 1; }

    /// Joins a pair at corner (x, y), 0 to Width() and 0 to Height().
    void SetJoin(std::int32_t x, std::int32_t y, RPJoin join);
    RPJoin Join(std::int32_t x, std::int32_t y) const { return HasJoins() ? joins_[Corner(x, y)] : kJoinNone; }
    bool HasJoins() const { return !joins_.empty(); }

 private:
    std::size_t Corner(std::int32_t x, std::int32_t y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_ + 1) + static_cast<std::size_t>(x);
    }

    std::int32_t width_, height_;
    std::vector<std::uint8_t> pixels_;
    std::vector<RPJoin> joins_;  // one for each corner, or none at all
};
