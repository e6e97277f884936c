#pragma once

#include <cstdint>
#include <exception>

#include "base/export.h"

// The host's utility services. Status results: 0 is success.

/// One entry of a localised message table: key text with its built-in default, then three words of the host's cache.
struct YQ_LStrEntry {
    const char* key;
    std::intptr_t cache[3];
};

/// A module's message table. `count` includes the terminating entry.
struct YQ_LStrTable {
    const char* module;
    std::intptr_t count;
    YQ_LStrEntry* entries;
};

/// The localised text of entry `index`, borrowed.
VRL_HOST_API const char* YQ_ZLookupLStrCache(const YQ_LStrTable* table, int index, int, int);

/// Tell the user, or whoever keeps the log, of a failure: by a code of its own, by a text alone, or as a check that failed at
/// line `line`. The unnamed arguments are the host's. A non-zero result is the status to fail with.
///@{
VRL_HOST_API int YQp_ReportCodedErrString(int code, int, int, const char* text);
VRL_HOST_API int YQp_ReportErrString(int, int, const char* text);
VRL_HOST_API int YQ_ReportFailedVerification(int, int line, int, const char* text);
///@}
/// Reports `error` and gives the status that stands for it.
VRL_HOST_API int YQ_TranslateAndReportException(const std::exception& error);

/// Bracket work of the calling thread whose errors must not be shown.
///@{
VRL_HOST_API int YQ_StartQuietErrorsOnCurrentThread(int);
VRL_HOST_API void YQ_EndQuietErrorsOnCurrentThread();
///@}

/// Whether the calling thread is the host's main thread, the only one that may consult abort callbacks.
VRL_HOST_API bool YQ_IsOnMainThread();

/// Calls `allocator` with `request`, freeing host caches between attempts, until it returns 0 or the host gives up.
VRL_HOST_API int YQ_PurgeLoop(std::int64_t bytes, int (*allocator)(void* request), void* request, int);
/// Adds (`acquire` 1) or removes (0) bytes of the host's memory account.
VRL_HOST_API void YQ_AccountAllocationEx(std::int64_t bytes, int acquire);
