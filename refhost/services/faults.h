#pragma once

#include <atomic>

#include "base/export.h"
#include "host/engine.h"

// Injected failures, for tests. Disarmed, a check costs one relaxed load.

namespace refhost {

enum class HostCall {
    kGetNUBAddressProc,
    kShapeGetBezPoints,
    kSetPolyDir,
    kListInsert,
    kListRemove,
    kListGetItem,
    kListGetConstAddress,
    kSetIdentityMatrix,
    kScaleMatrix,
    kInverseMatrix,
    kFillBuffer,
    kInvertAndFade,
    kFeatherLine,
    kGaussianBlur,
    kReport,
    kStartQuietErrors,
    kPurgeLoop,
    kNewPath,
    kPathGetData,
    kPathTransform,
    kGetOffsetPath,
    kNewNullProgress,
    kNewFill,
    kPainterGetInfo,
};

/// The `nth` (from 1) call of `call` from now on returns `status`; an engine procedure returns an error object instead.
VRL_HOST_API void FailHostCall(HostCall call, int nth, int status);
/// The same for the nth call of any of them.
VRL_HOST_API void FailAnyHostCall(int nth, int status);
/// The nth allocation from now and the `count` - 1 after it fail: those of the engine's memory interface, and those of
/// every `operator new` that asks `AllocationFails`.
VRL_HOST_API void FailAllocations(int nth, int count);
VRL_HOST_API void DisarmFaults();
/// True when an armed fault has struck.
VRL_HOST_API bool FaultStruck();

extern VRL_HOST_API std::atomic<bool> g_faults_armed;
VRL_HOST_API int CountHostCall(HostCall call);
VRL_HOST_API bool CountAllocation();

/// The status to fail with, 0 for none.
inline int InjectedStatus(HostCall call) { return g_faults_armed.load(std::memory_order_relaxed) ? CountHostCall(call) : 0; }
inline bool AllocationFails() { return g_faults_armed.load(std::memory_order_relaxed) && CountAllocation(); }

}  // namespace refhost
