#include "refhost/engine/painter_object.h"

namespace refhost {
namespace {

std::atomic<int> g_live{0};

}  // namespace

NUBContainer* NewPainterObject(const PathView& path, const PIVMatrix& matrix, const PIVDeviceRect& device, bool best_quality) {
    auto* container = new NUBContainer(kPainterSignature, path, matrix, device, best_quality);
    ++g_live;
    return container;
}

int LivePainterObjects() { return g_live; }

void ReleaseReference(NUBContainer* container) {
    if (container->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    delete container;
    --g_live;
}

}  // namespace refhost
