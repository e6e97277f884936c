#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "trace/raster.h"

/// A colour in CIE L*a*b*.
struct RPLab {
    float l, a, b;
};

struct RPPaletteEntry {
    RPSample colour;  // its place is not meant
    RPLab lab;
};

/// The colours of one trace, numbered in order of appearance. Every thread has its own table, which every trace resets.
class RPColorTable {
 public:
    static RPColorTable& OfThread();

    /// Forgets all colours; new ones may be added again.
    void Reset();
    /// The number of a colour, added when it is new. Numbers wrap after 255.
    /// @throws int               kBrokenInvariant once the table is frozen
    /// @throws kUnsupportedKind  for a colour that has not three components
    std::uint8_t IndexOf(const RPSample& colour);
    /// Ends the collecting and builds the palette.
    void Freeze(std::int32_t model, bool second_kind);

    /// @throws int  kBrokenInvariant before the table is frozen, or when there is no such colour
    const RPPaletteEntry& Entry(std::uint8_t index) const;
    /// The number of the palette colour with exactly these values.
    /// @throws int  kBrokenInvariant when there is none
    std::uint8_t IndexOfLab(const RPLab& lab) const;

 private:
    struct ColourOrder {
        bool operator()(const RPSample& a, const RPSample& b) const;  // model, then components
    };
    struct LabOrder {
        bool operator()(const RPLab& a, const RPLab& b) const;  // L*, then a*, then b*
    };
    struct Known {
        std::uint8_t index;
        RPLab lab;
    };

    std::map<RPSample, Known, ColourOrder> known_;
    std::uint8_t next_index_ = 0;
    bool frozen_ = false;
    std::int32_t model_ = kModelThree;
    bool second_kind_ = false;
    std::vector<RPPaletteEntry> palette_;
    std::map<RPLab, std::uint8_t, LabOrder> by_lab_;
};
