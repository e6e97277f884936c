#include "refhost/engine/binding.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <optional>
#include <vector>

#include "host/engine.h"
#include "refhost/engine/engine_error.h"
#include "refhost/engine/engine_memory.h"
#include "refhost/engine/offset.h"
#include "refhost/engine/painter_object.h"
#include "refhost/engine/path_object.h"
#include "refhost/services/faults.h"

namespace refhost {
namespace {

// Runs an engine procedure's work; what goes wrong in it becomes the error object its caller gets.
template <class Work>
const NUBErrorObject* ErrorOf(HostCall call, Work&& work) {
    if (InjectedStatus(call) != 0) return &kErrorInjected;
    try {
        work();
        return nullptr;
    } catch (const EngineError& failure) {
        return failure.error;
    } catch (const std::bad_alloc&) {
        return &kErrorOutOfMemory;
    }
}

// --- the binding layer's own services

std::int32_t g_unregister_count = 0;

std::int32_t* GetUnregisterCountAddr() { return &g_unregister_count; }

void ReleaseContainer(NUBContainer* container) { ReleaseReference(container); }

const char* GetContainerSignature(NUBContainer* container) { return container->signature; }

// --- paths

PathView ViewOf(std::int32_t entries, const M_Vector2T<float>* points, const PIVPointType* operators) {
    if (entries < 0) throw EngineError{&kErrorBadArgument};
    const auto count = static_cast<std::size_t>(entries);
    return {{points, count}, {operators, count}};
}

// The scale and the dictionary concern strokes; outlines that are only filled and offset need neither.
const NUBErrorObject* NewPath(GRXPath** out, std::int32_t entries, const M_Vector2T<float>* points, const PIVPointType* operators,
                              const PIVMatrix* matrix, std::uint32_t, double, void*) {
    return ErrorOf(HostCall::kNewPath,
                   [&] { *out = NewPathObject(ViewOf(entries, points, operators), matrix == nullptr ? kPIVIdentity : *matrix); });
}

void AddRefPath(GRXPath* path) { AddReference(path); }

void ReleasePath(GRXPath* path) { ReleaseReference(path); }

const NUBErrorObject* GetPathData(GRXPath* path, std::int32_t* entries, const M_Vector2T<float>** points,
                                  const PIVPointType** operators) {
    return ErrorOf(HostCall::kPathGetData, [&] {
        *entries = static_cast<std::int32_t>(path->points.size());
        *points = path->points.data();
        *operators = path->operators.data();
    });
}

const NUBErrorObject* TransformPath(GRXPath** out, GRXPath* path, float a, float b, float c, float d, float tx, float ty) {
    return ErrorOf(HostCall::kPathTransform, [&] { *out = NewPathObject(path->View(), {a, b, c, d, tx, ty}); });
}

// --- offsets

constexpr std::uint32_t kLastJoin = static_cast<std::uint32_t>(OffsetJoin::kBevel);

void Send(const CurveContour& contour, GRXOffsetCallback callback, void* refcon) {
    const auto narrow = [](Point p) { return M_Vector2T<float>{static_cast<float>(p.x), static_cast<float>(p.y)}; };
    const auto start = narrow(contour.start);
    callback(0, 0, 0, 0, start.x, start.y, kPIVMove, refcon);
    for (const CurveSegment& segment : contour.segments) {
        const auto control1 = narrow(segment.control1);
        const auto control2 = narrow(segment.control2);
        const auto end = narrow(segment.end);
        callback(control1.x, control1.y, control2.x, control2.y, end.x, end.y, segment.straight ? kPIVLine : kPIVCurve, refcon);
    }
    callback(0, 0, 0, 0, start.x, start.y, kPIVClose, refcon);
}

// The arguments without a name choose between ways of offsetting that this engine does not tell apart.
const NUBErrorObject* GetOffsetPath(GRXOffsetCallback callback, void*, void* refcon, std::int32_t entries,
                                    const M_Vector2T<float>* points, const PIVPointType* operators, std::int32_t, float distance,
                                    std::int32_t, std::uint32_t join, float miter_limit, std::int32_t, std::int32_t, std::int32_t,
                                    std::int32_t, float, std::int32_t, NUBProgressObject*, float) {
    return ErrorOf(HostCall::kGetOffsetPath, [&] {
        if (join > kLastJoin) throw EngineError{&kErrorBadArgument};
        const auto contours = OffsetOutline(ViewOf(entries, points, operators), static_cast<double>(distance),
                                            static_cast<OffsetJoin>(join), static_cast<double>(miter_limit));
        for (const CurveContour& contour : contours) Send(contour, callback, refcon);
    });
}

// There is one progress object, and it reports nothing; its count tells what was not given back.
std::atomic<int> g_live_progress{0};

NUBProgressObject* NewNullProgress() {
    static char progress;
    if (InjectedStatus(HostCall::kNewNullProgress) != 0) return nullptr;
    ++g_live_progress;
    return reinterpret_cast<NUBProgressObject*>(&progress);
}

void ReleaseProgress(NUBProgressObject*) { --g_live_progress; }

// --- painters

const NUBErrorObject* NewFill(NUBContainer** out, std::int32_t entries, const M_Vector2T<float>* points,
                              const PIVPointType* operators, std::int32_t fill_rule, std::int32_t quality,
                              const PIVMatrix* matrix, const PIVDeviceRect* device) {
    return ErrorOf(HostCall::kNewFill, [&] {
        constexpr std::int32_t kNonzeroWinding = 1;
        if (fill_rule != kNonzeroWinding) throw EngineError{&kErrorBadArgument};
        *out = NewPainterObject(ViewOf(entries, points, operators), *matrix, *device, quality != 0);
    });
}

const NUBErrorObject* GetPainterInfo(NUBContainer* painter, const PIVRasterPainterInfo** info) {
    return ErrorOf(HostCall::kPainterGetInfo, [&] { *info = &painter->painter.Info(); });
}

// --- lookup by name

struct Procedure {
    const char* interface_name;
    const char* method;
    const char* procedure;
    void* address;
};

template <class Proc>
void* AddressOf(Proc proc) {
    return reinterpret_cast<void*>(proc);
}

const std::vector<Procedure>& Procedures() {
    static const std::vector<Procedure> procedures = {
        {"NUBInterface", "GetUnregisterCountAddr", "NUBGetUnregisterCountAddr", AddressOf(GetUnregisterCountAddr)},
        {"NUBMemoryInterface", "Realloc", "NUBMemoryReallocProc", AddressOf(ReallocEngineBlock)},
        {"NUBMemoryInterface", "Free", "NUBMemoryFreeProc", AddressOf(FreeEngineBlock)},
        {"NUBContainerInterface", "Release", "NUBContainerReleaseProc", AddressOf(ReleaseContainer)},
        {"NUBContainerInterface", "GetSignature", "NUBContainerGetSignatureProc", AddressOf(GetContainerSignature)},
        {"GRXNewPathInterface", "NewPath", "GRXNewPathNewPathV4", AddressOf(NewPath)},
        {"GRXPathInterface", "AddRef", "GRXPathAddRefProc", AddressOf(AddRefPath)},
        {"GRXPathInterface", "Release", "GRXPathReleaseProc", AddressOf(ReleasePath)},
        {"GRXPathInterface", "GetPathData", "GRXPathGetPathDataProc", AddressOf(GetPathData)},
        {"GRXPathInterface", "Transform", "GRXPathTransformProc", AddressOf(TransformPath)},
        {"GRXOffsetPathInterface", "GetOffsetPath", "GRXOffsetPathGetOffsetPathV4", AddressOf(GetOffsetPath)},
        {"NUBProgressInterface", "NewNullProgress", "NUBProgressNewNullProgressProc", AddressOf(NewNullProgress)},
        {"NUBProgressInterface", "Release", "NUBProgressReleaseProc", AddressOf(ReleaseProgress)},
        {"TAV_BezierPathRasterPainterInterface", "NewFill", "TAV_BezierPathRasterPainterNewFillProc", AddressOf(NewFill)},
        {kPainterSignature, "GetInfo", "PIVRasterPainterGetInfoProc", AddressOf(GetPainterInfo)},
    };
    return procedures;
}

struct Override {
    const char* interface_name;
    const char* method;  // null: every method
    void* address;
};

std::mutex g_override_lock;
std::vector<Override> g_overrides;

bool Same(const char* a, const char* b) { return std::strcmp(a, b) == 0; }

// The address a test put in the procedure's place, when one did.
std::optional<void*> OverriddenAddress(const char* interface_name, const char* method) {
    const std::scoped_lock lock(g_override_lock);
    for (const Override& o : g_overrides) {
        if (Same(o.interface_name, interface_name) && (o.method == nullptr || Same(o.method, method))) return o.address;
    }
    return std::nullopt;
}

void* LookUp(const char* interface_name, const char* method, const char* procedure) {
    if (const auto replaced = OverriddenAddress(interface_name, method)) return *replaced;
    for (const Procedure& p : Procedures()) {
        if (Same(p.interface_name, interface_name) && Same(p.method, method) && Same(p.procedure, procedure)) return p.address;
    }
    return nullptr;
}

void CountUnregistration() { std::atomic_ref(g_unregister_count).fetch_add(1); }

}  // namespace

void OverrideProcedure(const char* interface_name, const char* method, void* address) {
    const std::scoped_lock lock(g_override_lock);
    g_overrides.push_back({interface_name, method, address});
    CountUnregistration();
}

void RestoreProcedures() {
    const std::scoped_lock lock(g_override_lock);
    g_overrides.clear();
    CountUnregistration();
}

int LiveEngineObjects() { return LivePathObjects() + LivePainterObjects() + LiveEngineBlocks() + g_live_progress; }

}  // namespace refhost

int HOB_GetNUBAddressProc(NUBAddressProc* proc) {
    if (const int status = refhost::InjectedStatus(refhost::HostCall::kGetNUBAddressProc)) return status;
    *proc = refhost::LookUp;
    return 0;
}
