#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#include "base/errors.h"
#include "host/engine.h"
#include "host/geometry_records.h"

/// An outline as parallel arrays of points and operators: entry k is point k with operator k. A record shared with the
/// host, which reads and extends it too, so the order of its fields is fixed. Up to 63 entries sit in the record
/// itself; more go to blocks of the engine's memory, which the destructor gives back.
struct CPIVBezierPath {
    CPIVBezierPath() = default;
    CPIVBezierPath(const CPIVBezierPath&) = delete;
    CPIVBezierPath& operator=(const CPIVBezierPath&) = delete;
    ~CPIVBezierPath();

    // All four append; they throw QELException or std::bad_alloc when the record cannot grow.
    void MoveTo(M_Vector2T<float> point);
    /// @throws CNUBError  "no current point" on an empty record, as CurveTo does
    void LineTo(M_Vector2T<float> point);
    void CurveTo(M_Vector2T<float> control1, M_Vector2T<float> control2, M_Vector2T<float> end);
    /// Repeats the subpath's first point. Does nothing on an empty record or after another close.
    void ClosePath();

    std::int64_t EntryCount() const { return operator_cursor - operators_begin; }

    /// Appends one entry; room for it was made.
    void Put(M_Vector2T<float> point, PIVPointType op) {
        *point_cursor++ = point;
        *operator_cursor++ = op;
    }
    /// False when `entries` more (1 or 3) need larger arrays; one entry always stays free.
    bool HasRoom(int entries) const { return static_cast<std::uint64_t>(EntryCount() + entries) < capacity; }
    /// Makes room for `entries` more (1 or 3); the blocks come from `realloc`, the engine's.
    void Grow(int entries, NUBReallocProc realloc);

    static constexpr int kInlineEntries = 64;

    M_Vector2T<float> inline_points[kInlineEntries];
    PIVPointType inline_operators[kInlineEntries];
    M_Vector2T<float>* heap_points = nullptr;
    std::uint64_t heap_points_size = 0;  // in floats, two a point
    PIVPointType* heap_operators = nullptr;
    std::uint64_t heap_operators_size = 0;
    M_Vector2T<float>* point_cursor = inline_points;
    PIVPointType* operator_cursor = inline_operators;
    std::int64_t subpath_start = -1;  // index of the current subpath's first entry
    M_Vector2T<float>* points_begin = inline_points;
    PIVPointType* operators_begin = inline_operators;
    std::uint64_t capacity = kInlineEntries;
};

/// `count` elements of `element_bytes` each, as one byte count.
/// @throws QELException  when it exceeds the 64-bit range
inline std::size_t CheckedBlockSize(std::uint64_t count, std::size_t element_bytes) {
    if (count > std::numeric_limits<std::size_t>::max() / element_bytes) throw QELException(kMathOverflow);
    return static_cast<std::size_t>(count) * element_bytes;
}

/// Moves the `held` entries from `begin`, either the inline array or the heap block, to a block of `count` entries.
template <class T>
void GrowArray(T*& heap, T*& begin, T*& cursor, std::uint64_t held, std::uint64_t count, NUBReallocProc realloc) {
    void* grown = realloc(heap, CheckedBlockSize(count, sizeof(T)));
    if (grown == nullptr) throw std::bad_alloc();
    const bool was_inline = heap == nullptr;
    heap = static_cast<T*>(grown);
    if (was_inline) std::memcpy(heap, begin, held * sizeof(T));
    begin = heap;
    cursor = heap + held;
}

// Inline, because the host extends the record with its own copy of the engine's memory procedures.
inline void CPIVBezierPath::Grow(int entries, NUBReallocProc realloc) {
    const auto held = static_cast<std::uint64_t>(EntryCount());
    const std::uint64_t grown = 2 * held + 2 * static_cast<std::uint64_t>(entries);
    GrowArray(heap_points, points_begin, point_cursor, held, grown, realloc);
    heap_points_size = 2 * grown;
    GrowArray(heap_operators, operators_begin, operator_cursor, held, grown, realloc);
    heap_operators_size = grown;
    capacity = grown;
}
