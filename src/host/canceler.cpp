#include "host/canceler.h"

#include <atomic>

#include "host/services.h"

void VRLp_ProgPtrCanceler::Check() const {
    if (YQ_IsOnMainThread() && progress != nullptr && progress->abort_proc != nullptr) {
        const std::int32_t stop = progress->abort_proc(progress->refcon);
        std::int32_t none = 0;
        if (stop != 0) std::atomic_ref(*cancel_code).compare_exchange_strong(none, stop);  // the first code wins
    }
    ThrowIfCanceled();
}

void VRLp_ProgPtrCanceler::ThrowIfCanceled() const {
    // Relaxed: nothing but the code itself is read through it.
    const std::int32_t stop = std::atomic_ref(*cancel_code).load(std::memory_order_relaxed);
    if (stop != 0) throw static_cast<int>(stop);
}
