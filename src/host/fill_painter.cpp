#include "host/fill_painter.h"

#include <algorithm>
#include <utility>

#include "base/narrow.h"
#include "host/engine_binding.h"
#include "host/nub_error.h"

VRLp_FillPainter::VRLp_FillPainter(VRLp_FillPainter&& other) noexcept
    : container_(std::exchange(other.container_, nullptr)), info_(std::exchange(other.info_, nullptr)) {}

VRLp_FillPainter& VRLp_FillPainter::operator=(VRLp_FillPainter&& other) noexcept {
    std::swap(container_, other.container_);
    std::swap(info_, other.info_);
    return *this;
}

VRLp_FillPainter::~VRLp_FillPainter() {
    if (container_ == nullptr) return;
    try {
        NUB_T_MT::ContainerRelease()(container_);
    } catch (const NUB_T_MT::CNUBError&) {
        // The engine has withdrawn its objects; there is nobody left to give this one back to.
    }
}

VRLp_FillPainter VRLp_FillPainter::OfPath(const GRXPathData& path, bool quality, const M_LRect& box) {
    VRLp_FillPainter painter = WithoutRows(path, quality, box);
    const PIVGetInfoProc get_info = NUB_T_MT::PainterGetInfo(painter.container_);
    NUB_T_MT::ThrowIfFailed(get_info(painter.container_, &painter.info_));
    return painter;
}

VRLp_FillPainter VRLp_FillPainter::WithoutRows(const GRXPathData& path, bool quality, const M_LRect& box) {
    constexpr std::int32_t kNonzeroWinding = 1;
    const std::int32_t left = std::min(box.left, box.right);
    const std::int32_t top = std::min(box.top, box.bottom);
    const PIVDeviceRect device = {left, top, box.right, box.bottom, left, box.right};

    VRLp_FillPainter painter;
    const TAVNewFillProc new_fill = NUB_T_MT::NewFill();
    NUB_T_MT::ContainerRelease();  // must be there, or the painter could never be given back
    NUB_T_MT::ThrowIfFailed(new_fill(&painter.container_, CheckedCount(static_cast<std::int64_t>(path.points.size())),
                                     path.points.data(), path.operators.data(), kNonzeroWinding, quality ? 1 : 0, &kPIVIdentity,
                                     &device));
    return painter;
}
