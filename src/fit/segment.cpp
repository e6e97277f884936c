#include "fit/segment.h"

#include <stdexcept>

#include "base/errors.h"

CFSegment::CFSegment(std::int32_t count, std::int32_t spacing, std::int32_t type)
    : CFSegment(count, spacing, type, [] { return CFPoint{}; }) {}

CFSegment::CFSegment(Unset, std::int32_t count, std::int32_t spacing, std::int32_t type, std::int32_t tag)
    : count_(count), kind_(spacing), type_(type), tag_(tag) {
    if (count < 1) throw kBrokenInvariant;
    const auto stored = static_cast<std::size_t>(count) * (IsClosed() ? 2 : 1);
    xs_.resize(stored);
    ys_.resize(stored);
}

void CFSegment::RefuseIndex() { throw std::out_of_range("invalid vector subscript"); }
