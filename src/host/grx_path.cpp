#include "host/grx_path.h"

#include <utility>

#include "base/narrow.h"
#include "host/engine_binding.h"
#include "host/nub_error.h"

CGRXPath::CGRXPath(const CGRXPath& other) : path_(other.path_) {
    if (path_ != nullptr) NUB_T_MT::PathAddRef()(path_);
}

CGRXPath& CGRXPath::operator=(CGRXPath other) noexcept {
    std::swap(path_, other.path_);
    return *this;
}

CGRXPath::~CGRXPath() {
    if (path_ == nullptr) return;
    try {
        NUB_T_MT::PathRelease()(path_);
    } catch (const NUB_T_MT::CNUBError&) {
        // The engine has withdrawn its paths; there is nobody left to give this one back to.
    }
}

CGRXPath CGRXPath::FromRecord(const CPIVBezierPath& record) {
    constexpr double kEngineScale = 2.0;
    const GRXNewPathProc new_path = NUB_T_MT::NewPath();
    NUB_T_MT::PathRelease();  // must be there, or the path could never be given back
    GRXPath* path = nullptr;
    NUB_T_MT::ThrowIfFailed(new_path(&path, CheckedCount(record.EntryCount()), record.points_begin, record.operators_begin,
                                     nullptr, 0, kEngineScale, nullptr));
    return CGRXPath(path);
}

GRXPathData CGRXPath::Data() const {
    if (path_ == nullptr) return {};
    std::int32_t entries = 0;
    const M_Vector2T<float>* points = nullptr;
    const PIVPointType* operators = nullptr;
    NUB_T_MT::ThrowIfFailed(NUB_T_MT::PathGetData()(path_, &entries, &points, &operators));
    const auto count = static_cast<std::size_t>(entries);
    return {{points, count}, {operators, count}};
}

CGRXPath CGRXPath::Transformed(const PIVMatrix& m) const {
    GRXPath* mapped = nullptr;
    NUB_T_MT::ThrowIfFailed(NUB_T_MT::PathTransform()(&mapped, path_, m.a, m.b, m.c, m.d, m.tx, m.ty));
    return CGRXPath(mapped);
}
