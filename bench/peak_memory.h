#pragma once

#include <cstdint>

/// Bytes that the program has taken through `new` since the start of this measurement, at their peak.
class PeakMemory {
 public:
    PeakMemory();
    std::int64_t Bytes() const;

 private:
    std::int64_t before_;
};
