#include "api/vrl.h"
#include "base/errors.h"
#include "host/bezier_path.h"
#include "host/engine_binding.h"
#include "host/fill_painter.h"
#include "host/grx_path.h"

namespace {

// One small fill, so that the first mask does not pay for the engine's own start.
void WarmEngine() {
    constexpr float kSide = 100.0F;
    CPIVBezierPath triangle;
    triangle.MoveTo({0.0F, 0.0F});
    triangle.LineTo({kSide, kSide});
    triangle.LineTo({0.0F, kSide});
    triangle.ClosePath();

    NUB_T_MT::BindNewPathInterface();
    NUB_T_MT::BindPathInterface();  // before there is a path that it must release
    const CGRXPath path = CGRXPath::FromRecord(triangle);
    const GRXPathData data = path.Data();
    NUB_T_MT::BindPainterInterface();
    NUB_T_MT::BindContainerInterface();  // before there is a painter that it must release
    VRLp_FillPainter::WithoutRows(data, true, {0, 0, 100, 100});
}

}  // namespace

void VRL_Birth() {
    NUBAddressProc proc = nullptr;
    ThrowIfFailed(HOB_GetNUBAddressProc(&proc));
    NUB_T_MT::StartBinding(proc);  // what is missing surfaces at its first use
    WarmEngine();
}

void VRL_Death() noexcept { NUB_T_MT::EndBinding(); }
