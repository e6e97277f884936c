#pragma once

// Statuses of this host. The library passes them on unchanged; 0 is success everywhere.
inline constexpr int kOutOfRange = -1;
inline constexpr int kNoMemory = -2;
inline constexpr int kFailed = -3;
inline constexpr int kNotServed = -4;  // this host renders plain masks only
