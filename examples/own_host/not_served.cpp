// What a host of plain masks leaves out. Its callers get a status, an error or nothing, and the library passes that on.

#include "host/feather_contour.h"
#include "host/geometry_records.h"
#include "host/image.h"
#include "host/path_bridge.h"
#include "host/world.h"
#include "statuses.h"

// Uniform feather.
namespace {
int FeatherLine(unsigned char, std::int32_t, std::int32_t, std::int32_t, std::int32_t, void*, void*) { return kNotServed; }
const bool g_filled = [] {  // before main, so before anybody renders
    for (const int entry : {kOverFeatherLine8, kOverFeatherLine16}) GWp_G_OverFuncs[entry] = reinterpret_cast<void*>(FeatherLine);
    return true;
}();
}  // namespace
void* GWp_G_OverFuncs[kOverFuncCount] = {};

// Feather points: no shape has any.
DY_FeatherContourMaker::DY_FeatherContourMaker(DY_Shape*, float, const DY_FeatherContourCanceler&, float) { throw kNotServed; }
DY_FeatherContourMaker::~DY_FeatherContourMaker() = default;
float DY_FeatherContourMaker::GetMaxRadius(bool) const { throw kNotServed; }
GRXPath* DY_FeatherContourMaker::MakeGRXPath(float, float, const M_FloatRect*, DY_ContourResults*) const { throw kNotServed; }
int M_InverseMatrixQuiet(const M_Matrix3*, M_Matrix3*) { return kNotServed; }
void M_TransformBounds(const M_Matrix3*, const M_FloatRect* rect, M_FloatRect* bounds) { *bounds = *rect; }

// Expansion and insets: the engine's lookup knows no offsets, so nothing arrives here.
int M_ScaleMatrix(double, double, double, double, M_Matrix3*) { return kNotServed; }
HOB_PathCollector::HOB_PathCollector(double, CPIVBezierPath&) : collected_(nullptr) {}
HOB_PathCollector::~HOB_PathCollector() = default;
void HOB_PathCollector::Callback(float, float, float, float, float, float, PIVPointType, void*) {}
void HOB_PathCollector::Flush() { throw kNotServed; }
void HOB_PlayOutlines(const CGRXPath&, HOB_OutlinePlayer&) { throw kNotServed; }

// Layers and tracing: there are no images.
GW_World* GW_World::NewReference(GW_LayerDef*) { return nullptr; }
GW_World* GW_World::New(std::int32_t, std::int32_t, std::int32_t, std::int32_t) { return nullptr; }
void GW_MergeMaskAlpha(const GW_ProgressInfo*, int, int, const M_LRect*, const GW_UnoBuffer*, void*, GW_World*) {}
int GW_GaussianBlur1D(const GW_ProgressInfo*, const GW_World*, float, int, int, int, int, int, int, GW_World*) {
    return kNotServed;
}
int WEX_Remove(int, WEX_Head**, int, int) { return kNotServed; }
int DY_SetPolyDir(unsigned char, DY_Shape*) { return kNotServed; }
