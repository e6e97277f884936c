#pragma once

#include <cstdint>

/// The host's progress record, owned by the host. A non-zero result of a callback means stop and is the stop code.
struct GW_ProgressInfo {
    void* refcon;                                // handed back to both callbacks
    std::int32_t (*abort_proc)(void* refcon);    // may be null
    std::int32_t (*progress_proc)(void* refcon,  // may be null
                                  std::int32_t step, std::int32_t total);
};
