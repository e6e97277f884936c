#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>

#include "host/services.h"
#include "host/status_of.h"

/// Allocates `count` elements through the host's purge-and-retry loop. The elements are not initialised.
/// @throws int  the status with which the host gave up
template <class T>
std::unique_ptr<T[]> VRLp_AllocatePurgeable(std::int32_t count);

/// One slot for a large scratch block, taken through the purge loop and reported to the host's memory account.
template <class T>
class VRLp_ScratchBuffer {
    static_assert(std::is_trivial_v<T>);

 public:
    VRLp_ScratchBuffer() = default;
    VRLp_ScratchBuffer(const VRLp_ScratchBuffer&) = delete;
    VRLp_ScratchBuffer& operator=(const VRLp_ScratchBuffer&) = delete;
    ~VRLp_ScratchBuffer() { Release(); }

    /// Refills the slot with a block of `count` elements; the block it held is given back.
    /// @throws int  the host's status; the slot then keeps what it held
    void Take(std::int32_t count) {
        auto block = VRLp_AllocatePurgeable<T>(count);
        Release();
        block_ = std::move(block);
        bytes_ = static_cast<std::int64_t>(count) * static_cast<std::int64_t>(sizeof(T));
        YQ_AccountAllocationEx(bytes_, 1);
    }

    T* Data() const { return block_.get(); }

 private:
    void Release() {
        if (block_ == nullptr) return;
        block_.reset();
        YQ_AccountAllocationEx(bytes_, 0);
    }

    std::unique_ptr<T[]> block_;
    std::int64_t bytes_ = 0;
};

/// What travels through the host's purge loop to the allocator.
template <class T>
struct VRLp_PurgeableRequest {
    std::int32_t count;
    std::int32_t error = 0;
    T* result = nullptr;
    bool succeeded = false;
};

/// While one lives, errors of the calling thread are not shown: a later attempt may repair them.
/// @throws int  the status with which the host refuses
struct VRLp_QuietErrors {
    VRLp_QuietErrors() {
        if (const int status = YQ_StartQuietErrorsOnCurrentThread(0); status != 0) throw status;
    }
    VRLp_QuietErrors(const VRLp_QuietErrors&) = delete;
    VRLp_QuietErrors& operator=(const VRLp_QuietErrors&) = delete;
    ~VRLp_QuietErrors() { YQ_EndQuietErrorsOnCurrentThread(); }
};

template <class T>
int VRLp_PurgeableAllocator(void* opaque) {
    auto& request = *static_cast<VRLp_PurgeableRequest<T>*>(opaque);
    try {
        const VRLp_QuietErrors quiet;  // beyond the failure's own report
        return VRLp_StatusOf([&] {
            request.succeeded = false;
            request.result = new T[static_cast<std::size_t>(request.count)];
            request.succeeded = true;
        });
    } catch (int status) {
        return status;  // not even quiet
    }
}

template <class T>
std::unique_ptr<T[]> VRLp_AllocatePurgeable(std::int32_t count) {
    VRLp_PurgeableRequest<T> request{count};
    const auto bytes = static_cast<std::int64_t>(count) * static_cast<std::int64_t>(sizeof(T));
    const int status = YQ_PurgeLoop(bytes, &VRLp_PurgeableAllocator<T>, &request, 0);
    std::unique_ptr<T[]> block(request.result);
    if (status != 0) throw status;
    if (request.error != 0) throw static_cast<int>(request.error);
    return block;
}
