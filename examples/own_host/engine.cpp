// The engine and the way into it: paths, fill painters, and the lookup of their procedures by name. What the lookup does
// not know the library does not have: offsets fail with "missing procedure", everything else works.

#include "host/engine.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "scan.h"

struct GRXPath {
    std::atomic<int> references{1};  // contour work shares paths between threads
    std::vector<M_Vector2T<float>> points;
    std::vector<PIVPointType> operators;
};

struct NUBContainer {  // a fill painter, the only object of this engine
    PIVRasterPainterInfo info;
    std::vector<std::uint8_t> coverage;
    PIVRun run;  // the whole row
};

namespace {

constexpr const char* kPainterSignature = "own_host painter";

// Identifier 1 of "QEL" is exhausted memory for the library.
constexpr NUBErrorObject kMemoryError = {"QEL", 1, "not enough memory"};

template <class Work>
const NUBErrorObject* ErrorOf(Work work) {
    try {
        work();
        return nullptr;
    } catch (const std::bad_alloc&) {
        return &kMemoryError;
    }
}

std::int32_t* UnregisterCountAddress() {
    static std::int32_t count = 0;  // never changes: no procedure is ever withdrawn
    return &count;
}

const NUBErrorObject* NewPath(GRXPath** out, std::int32_t entries, const M_Vector2T<float>* points, const PIVPointType* operators,
                              const PIVMatrix*, std::uint32_t, double, void*) {
    return ErrorOf([&] {
        auto path = std::make_unique<GRXPath>();
        path->points.assign(points, points + entries);
        path->operators.assign(operators, operators + entries);
        *out = path.release();
    });
}
void AddRef(GRXPath* path) { ++path->references; }
void Release(GRXPath* path) {
    if (--path->references == 0) delete path;
}
const NUBErrorObject* GetPathData(GRXPath* path, std::int32_t* entries, const M_Vector2T<float>** points,
                                  const PIVPointType** operators) {
    *entries = static_cast<std::int32_t>(path->points.size());
    *points = path->points.data();
    *operators = path->operators.data();
    return nullptr;
}
const NUBErrorObject* TransformPath(GRXPath** out, GRXPath* path, float a, float b, float c, float d, float tx, float ty) {
    return ErrorOf([&] {
        auto mapped = std::make_unique<GRXPath>();
        mapped->operators = path->operators;
        for (const auto [x, y] : path->points) mapped->points.push_back({a * x + c * y + tx, b * x + d * y + ty});
        *out = mapped.release();
    });
}

const PIVRun* RowOf(void* painter, std::int32_t, const PIVRasterPainterInfo*, void*) {
    return &static_cast<NUBContainer*>(painter)->run;
}
const NUBErrorObject* NewFill(NUBContainer** out, std::int32_t entries, const M_Vector2T<float>* points,
                              const PIVPointType* operators, std::int32_t, std::int32_t, const PIVMatrix*,
                              const PIVDeviceRect* box) {
    return ErrorOf([&] {
        auto painter = std::make_unique<NUBContainer>();
        painter->coverage = Scan({points, static_cast<std::size_t>(entries)}, operators, *box);
        painter->run = {kPIVRunPartial, box->right};
        painter->info = {painter->coverage.data(), box->right - box->left, RowOf, painter.get()};
        *out = painter.release();
    });
}
const NUBErrorObject* GetInfo(NUBContainer* painter, const PIVRasterPainterInfo** info) {
    *info = &painter->info;
    return nullptr;
}
void ReleasePainter(NUBContainer* painter) { delete painter; }  // the library never takes a second reference
const char* SignatureOf(NUBContainer*) { return kPainterSignature; }

void* LookUp(const char* interface_name, const char* method, const char*) {
    const auto is = [&](const char* wanted_interface, const char* wanted_method) {
        return std::strcmp(interface_name, wanted_interface) == 0 && std::strcmp(method, wanted_method) == 0;
    };
    const auto address = [](auto* procedure) { return reinterpret_cast<void*>(procedure); };
    if (is("NUBInterface", "GetUnregisterCountAddr")) return address(UnregisterCountAddress);
    if (is("NUBMemoryInterface", "Realloc")) return address(static_cast<NUBReallocProc>(std::realloc));
    if (is("NUBMemoryInterface", "Free")) return address(static_cast<NUBFreeProc>(std::free));
    if (is("NUBContainerInterface", "Release")) return address(ReleasePainter);
    if (is("NUBContainerInterface", "GetSignature")) return address(SignatureOf);
    if (is("GRXNewPathInterface", "NewPath")) return address(NewPath);
    if (is("GRXPathInterface", "AddRef")) return address(AddRef);
    if (is("GRXPathInterface", "Release")) return address(Release);
    if (is("GRXPathInterface", "GetPathData")) return address(GetPathData);
    if (is("GRXPathInterface", "Transform")) return address(TransformPath);
    if (is("TAV_BezierPathRasterPainterInterface", "NewFill")) return address(NewFill);
    if (is(kPainterSignature, "GetInfo")) return address(GetInfo);
    return nullptr;
}

}  // namespace

int HOB_GetNUBAddressProc(NUBAddressProc* proc) {
    *proc = LookUp;
    return 0;
}
