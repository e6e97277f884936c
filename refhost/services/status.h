#pragma once

namespace refhost {

// Statuses of the reference host; 0 is success.
inline constexpr int kStatusFailed = -1;    // any exception but the next
inline constexpr int kStatusBadIndex = -2;  // a list or point index out of range
inline constexpr int kStatusBadArgument = -3;
inline constexpr int kStatusNoMemory = -4;

}  // namespace refhost
