#pragma once

#include <cstdint>

/// Bytes that the program has taken through `new` since the start of this measurement, at their peak. What was taken before
/// and is given back meanwhile counts below zero.
class PeakMemory {
 public:
    PeakMemory();
    PeakMemory(const PeakMemory&) = delete;
    PeakMemory& operator=(const PeakMemory&) = delete;
    ~PeakMemory();
    std::int64_t Bytes() const;
};
