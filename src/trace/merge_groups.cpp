#include "trace/merge_groups.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "base/narrow.h"

namespace {

constexpr std::size_t kLargest = 3;  // members that a group may take its colour from

RPMergeGroup::Chain Spliced(const RPMergeGroup::Chain& a, const RPMergeGroup::Chain& b, std::vector<std::int32_t>& next);

const RPLab& LabOf(const RPRegion& region) { return RPColorTable::OfThread().Entry(region.colour).lab; }

}  // namespace

float Distance(const RPLab& a, const RPLab& b) {
    const float l = a.l - b.l, x = a.a - b.a, y = a.b - b.b;
    return l * l + x * x + y * y;
}

RPMergeGroups::RPMergeGroups(const RPTrace::Regions& regions)
    : regions_(regions),
      groups_(regions.size()),
      parent_(regions.size()),
      member_count_(regions.size(), 1),
      next_member_(regions.size(), kNone),
      next_border_(regions.size(), kNone) {
    std::iota(parent_.begin(), parent_.end(), 0);
    for (std::size_t i = 0; i < regions.size(); ++i) {
        RPMergeGroup& group = groups_[i];
        const auto number = static_cast<std::int32_t>(i);
        group.area = regions[i].area;
        group.mean = LabOf(regions[i]);
        group.sum_l = static_cast<double>(group.mean.l) * group.area;
        group.sum_a = static_cast<double>(group.mean.a) * group.area;
        group.sum_b = static_cast<double>(group.mean.b) * group.area;
        group.members = group.borders = {number, number};
    }
}

std::int32_t RPMergeGroups::Find(std::int32_t region) {
    const auto parent = [&](std::int32_t i) -> std::int32_t& { return parent_[static_cast<std::size_t>(i)]; };
    while (parent(region) != region) region = parent(region) = parent(parent(region));
    return region;
}

std::int32_t RPMergeGroups::Unite(std::int32_t a, std::int32_t b) {
    RPMergeGroup united;
    const RPMergeGroup &first = Group(a), &second = Group(b);
    united.area = first.area + second.area;
    united.sum_l = first.sum_l + second.sum_l;
    united.sum_a = first.sum_a + second.sum_a;
    united.sum_b = first.sum_b + second.sum_b;
    // Narrowed only here, so that groups of one colour keep exactly that colour.
    united.mean = {NarrowToFloat(united.sum_l / united.area), NarrowToFloat(united.sum_a / united.area),
                   NarrowToFloat(united.sum_b / united.area)};
    united.members = Spliced(first.members, second.members, next_member_);
    united.borders = Spliced(first.borders, second.borders, next_border_);

    const auto count = [&](std::int32_t i) -> std::int32_t& { return member_count_[static_cast<std::size_t>(i)]; };
    if (count(a) < count(b)) std::swap(a, b);
    count(a) += count(b);
    parent_[static_cast<std::size_t>(b)] = a;
    Group(a) = united;
    return a;
}

std::uint8_t RPMergeGroups::FinalColour(std::int32_t number) const {
    const std::vector<std::int32_t> largest = LargestMembers(number);
    const auto region = [&](std::size_t i) -> const RPRegion& { return regions_[static_cast<std::size_t>(largest[i])]; };
    const RPLab& mean = Group(number).mean;
    RPLab chosen = LabOf(region(0));
    const bool close_in_size = largest.size() > 1 && 2 * std::int64_t{region(1).area} > region(0).area;
    for (std::size_t i = 1; close_in_size && i < largest.size(); ++i) {
        if (Distance(LabOf(region(i)), mean) < Distance(chosen, mean)) chosen = LabOf(region(i));
    }
    return RPColorTable::OfThread().IndexOfLab(chosen);
}

std::vector<std::int32_t> RPMergeGroups::LargestMembers(std::int32_t number) const {
    const auto area = [&](std::int32_t region) { return regions_[static_cast<std::size_t>(region)].area; };
    std::vector<std::int32_t> largest;
    for (std::int32_t member = Group(number).members.first; member != kNone; member = NextMember(member)) {
        const auto place = std::find_if(largest.begin(), largest.end(), [&](std::int32_t r) { return area(r) < area(member); });
        largest.insert(place, member);
        if (largest.size() > kLargest) largest.pop_back();
    }
    return largest;
}

namespace {

RPMergeGroup::Chain Spliced(const RPMergeGroup::Chain& a, const RPMergeGroup::Chain& b, std::vector<std::int32_t>& next) {
    if (a.first == kNone) return b;
    if (b.first == kNone) return a;
    next[static_cast<std::size_t>(a.last)] = b.first;
    return {a.first, b.last};
}

}  // namespace
