#pragma once

#include <cstdint>
#include <functional>

namespace support {

/// The most bytes that blocks of `operator new` taken by `work`, on any thread, hold at once. A block that would take them past
/// `limit` cannot be had, and counts as if it had been.
std::int64_t MemoryPeakOf(const std::function<void()>& work, std::int64_t limit);

}  // namespace support
