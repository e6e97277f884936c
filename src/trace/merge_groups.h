#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "trace/color_table.h"
#include "trace/trace.h"

/// Squared distance of two colours.
float Distance(const RPLab& a, const RPLab& b);

/// Regions that become one.
struct RPMergeGroup {
    /// Regions chained through a `next` of their own.
    struct Chain {
        std::int32_t first, last;
    };

    std::int32_t area = 0;  // pixels of all members, and their weight in the mean colour
    RPLab mean{};
    double sum_l = 0, sum_a = 0, sum_b = 0;  // area times colour over the members
    float colour_error = 0;                  // how far the mean has moved since the neighbours last looked, squared
    std::uint32_t visit = 0;                 // the latest walk that met the group
    Chain members{}, borders{};              // `borders` without the members that have lost all borders
};

/// A group for every region, united little by little. A group goes by the number of the one of its regions that `Find` names.
class RPMergeGroups {
 public:
    /// Takes the colours from the thread's colour table.
    explicit RPMergeGroups(const RPTrace::Regions& regions);

    std::size_t Count() const { return groups_.size(); }  // of the numbers
    std::int32_t Find(std::int32_t region);
    RPMergeGroup& Group(std::int32_t number) { return groups_[static_cast<std::size_t>(number)]; }
    /// Makes one group of two different ones, the members of `a` before those of `b`, and returns its number.
    std::int32_t Unite(std::int32_t a, std::int32_t b);

    std::int32_t NextMember(std::int32_t region) const { return next_member_[static_cast<std::size_t>(region)]; }
    std::int32_t& NextBorder(std::int32_t region) { return next_border_[static_cast<std::size_t>(region)]; }
    /// The colour number of a group: the largest member's, or that of the second or third when those come close in size and
    /// are nearer to the mean.
    /// @throws int  kBrokenInvariant when the palette has not the colour
    std::uint8_t FinalColour(std::int32_t number) const;

 private:
    const RPMergeGroup& Group(std::int32_t number) const { return groups_[static_cast<std::size_t>(number)]; }
    std::vector<std::int32_t> LargestMembers(std::int32_t number) const;  // up to three; the earlier one first among equals

    const RPTrace::Regions& regions_;
    std::vector<RPMergeGroup> groups_;
    std::vector<std::int32_t> parent_, member_count_;  // of the forest that leads to the groups' numbers
    std::vector<std::int32_t> next_member_, next_border_;
};
