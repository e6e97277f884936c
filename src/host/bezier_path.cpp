#include "host/bezier_path.h"

#include "host/engine_binding.h"
#include "host/nub_error.h"

namespace {

void MakeRoom(CPIVBezierPath& path, int entries) {
    if (!path.HasRoom(entries)) path.Grow(entries, NUB_T_MT::MemoryRealloc());
}

}  // namespace

CPIVBezierPath::~CPIVBezierPath() {
    if (heap_points == nullptr) return;
    try {
        const NUBFreeProc free = NUB_T_MT::MemoryFree();
        free(heap_points);
        if (heap_operators != nullptr) free(heap_operators);
    } catch (const NUB_T_MT::CNUBError&) {
        // The engine has withdrawn its memory; there is nobody left to give the blocks back to.
    }
}

void CPIVBezierPath::MoveTo(M_Vector2T<float> point) {
    MakeRoom(*this, 1);
    subpath_start = EntryCount();
    Put(point, kPIVMove);
}

void CPIVBezierPath::LineTo(M_Vector2T<float> point) {
    if (EntryCount() == 0) throw NUB_T_MT::CNUBError("no current point");
    MakeRoom(*this, 1);
    Put(point, kPIVLine);
}

void CPIVBezierPath::CurveTo(M_Vector2T<float> control1, M_Vector2T<float> control2, M_Vector2T<float> end) {
    if (EntryCount() == 0) throw NUB_T_MT::CNUBError("no current point");
    MakeRoom(*this, 3);
    Put(control1, kPIVCurve);
    Put(control2, kPIVCurve);
    Put(end, kPIVCurve);
}

void CPIVBezierPath::ClosePath() {
    if (EntryCount() == 0 || operator_cursor[-1] == kPIVClose) return;
    MakeRoom(*this, 1);
    Put(points_begin[subpath_start], kPIVClose);
}
