#pragma once

#include <cstdint>

#include "base/export.h"
#include "host/progress.h"

/// What a long-running host routine polls to learn that it should stop.
class VRL_SHARED_TYPE DY_FeatherContourCanceler {
 public:
    virtual void Check() const = 0;  // polls the host, then ThrowIfCanceled
    virtual void ThrowIfCanceled() const = 0;

 protected:
    ~DY_FeatherContourCanceler() = default;
};

/// Carries the host's abort callback to every thread that works for one export.
/// Only the main thread consults the callback; the first stop code is kept in `cancel_code` and ends the work on every
/// thread at its next check. Borrows both pointers; `cancel_code` belongs to the export and starts at 0.
class VRLp_ProgPtrCanceler final : public DY_FeatherContourCanceler {
 public:
    VRLp_ProgPtrCanceler(const GW_ProgressInfo* host_progress, std::int32_t* shared_code)
        : progress(host_progress), cancel_code(shared_code) {}
    /// @throws int  the stop code
    void Check() const override;
    /// @throws int  the stop code
    void ThrowIfCanceled() const override;

    const GW_ProgressInfo* progress;  // may be null
    std::int32_t* cancel_code;
};
