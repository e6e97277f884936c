#include "refhost/services/memory.h"

#include <atomic>
#include <new>

#include "host/services.h"
#include "host/shape.h"
#include "refhost/services/faults.h"

namespace {

std::atomic<std::int64_t> g_accounted{0};
std::atomic<std::int64_t> g_total{0};

constexpr int kAllocationAttempts = 3;

}  // namespace

namespace refhost {

std::int64_t AccountedBytes() { return g_accounted; }
std::int64_t AccountedTotal() { return g_total; }

}  // namespace refhost

void YQ_AccountAllocationEx(std::int64_t bytes, int acquire) {
    g_accounted += acquire != 0 ? bytes : -bytes;
    if (acquire != 0) g_total += bytes;
}

// This host keeps no caches: a repeated attempt gives other threads' memory the time to come back.
int YQ_PurgeLoop(std::int64_t, int (*allocator)(void* request), void* request, int) {
    if (const int status = refhost::InjectedStatus(refhost::HostCall::kPurgeLoop)) return status;
    for (int attempt = 0; attempt < kAllocationAttempts; ++attempt) {
        if (allocator(request) == 0) return 0;
    }
    return YQ_TranslateAndReportException(std::bad_alloc());  // the attempts themselves were quiet
}

void* YQ_MemTrackedObject::operator new(std::size_t size) { return ::operator new(size); }
void YQ_MemTrackedObject::operator delete(void* block) noexcept { ::operator delete(block); }
