#include "fit/segment.h"

#include <stdexcept>

#include "base/errors.h"

CFSegment::CFSegment(std::int32_t count, std::int32_t spacing, std::int32_t type) : CFSegment(count, spacing, type, 0) {}

CFSegment::CFSegment(std::int32_t count, std::int32_t spacing, std::int32_t type, std::int32_t tag)
    : count_(count), kind_(spacing), type_(type), tag_(tag) {
    if (count < 1) throw kBrokenInvariant;
    const auto stored = static_cast<std::size_t>(count) * (IsClosed() ? 2 : 1);
    xs_.resize(stored);
    ys_.resize(stored);
}

CFPoint CFSegment::Point(std::int32_t index) const {
    if (IsClosed()) index = RoundLoop(index, count_);
    if (index < 0 || index >= count_) throw std::out_of_range("invalid vector subscript");
    const auto i = static_cast<std::size_t>(index);
    return {xs_[i], ys_[i]};
}

void CFSegment::SetPoint(std::int32_t index, CFPoint point) {
    if (index < 0 || index >= count_) throw std::out_of_range("invalid vector subscript");
    for (auto i = static_cast<std::size_t>(index); i < xs_.size(); i += static_cast<std::size_t>(count_)) {
        xs_[i] = point.x;
        ys_[i] = point.y;
    }
}
