// Reports, memory, threads and matrices.

#include "host/services.h"

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>
#include <thread>

#include "host/geometry_records.h"
#include "host/parallel.h"
#include "statuses.h"

namespace {

const std::thread::id g_main_thread = std::this_thread::get_id();  // the one that loads this library
thread_local int g_quiet = 0;
std::atomic<std::int64_t> g_held_bytes{0};

int Report(const char* text) {
    if (g_quiet == 0) std::fprintf(stderr, "own_host: %s\n", text);
    return 0;
}

}  // namespace

// The texts of this host are the built-in ones, which follow the key.
const char* YQ_ZLookupLStrCache(const YQ_LStrTable* table, int index, int, int) {
    const char* key = table->entries[index].key;
    const char* equals = std::strchr(key, '=');
    return equals == nullptr ? key : equals + 1;
}

int YQp_ReportCodedErrString(int, int, int, const char* text) { return Report(text); }
int YQp_ReportErrString(int, int, const char* text) { return Report(text); }
int YQ_ReportFailedVerification(int, int, int, const char* text) { return Report(text); }
int YQ_TranslateAndReportException(const std::exception& error) {
    Report(error.what());
    return dynamic_cast<const std::bad_alloc*>(&error) != nullptr ? kNoMemory : kFailed;
}
int YQ_StartQuietErrorsOnCurrentThread(int) {
    ++g_quiet;
    return 0;
}
void YQ_EndQuietErrorsOnCurrentThread() { --g_quiet; }

bool YQ_IsOnMainThread() { return std::this_thread::get_id() == g_main_thread; }

// There is nothing to purge, so one attempt is as good as several.
int YQ_PurgeLoop(std::int64_t, int (*allocator)(void* request), void* request, int) { return allocator(request); }
void YQ_AccountAllocationEx(std::int64_t bytes, int acquire) { g_held_bytes += acquire != 0 ? bytes : -bytes; }

int GW_IterateGeneric(std::int32_t count, void* context, GW_IterateStep step) {
    for (std::int32_t i = 0; i < count; ++i) {
        if (const int status = step(context, 0, i)) return status;
    }
    return 0;
}

bool M_Matrix3::IsIdentityWithinEpsilon(double epsilon) const {
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (!(std::abs(m[row][column] - (row == column ? 1 : 0)) <= epsilon)) return false;
        }
    }
    return true;
}
int M_SetIdentityMatrix(M_Matrix3* matrix) {
    *matrix = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    return 0;
}
