#include "host/world.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

#include "refhost/services/faults.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

constexpr std::int32_t kComponents = 4;

class ReferringWorld final : public GW_World {
 public:
    explicit ReferringWorld(const GW_World& other)
        : GW_World(other.width, other.height, other.row_bytes, other.data), depth_(other.Depth()) {}
    std::int32_t Depth() const override { return depth_; }

 private:
    std::int32_t depth_;
};

/// Asks for large pages where the system has them: the first touch of every small one would cost more than a pass over the
/// picture.
void PreferLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) {
#if defined(__linux__)
    constexpr std::uintptr_t kPage = 4096, kWorthwhile = std::uintptr_t{1} << 22;
    if (bytes < kWorthwhile) return;
    const std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(block) + kPage - 1) / kPage * kPage;
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(block) + bytes) / kPage * kPage;
    madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);  // only advice: it may be refused
#endif
}

/// Large blocks come from the system with zeros in them already.
void* ZeroedBlock(std::size_t bytes) {
    void* block = refhost::AllocationFails() ? nullptr : std::calloc(std::max<std::size_t>(bytes, 1), 1);
    if (block == nullptr) throw std::bad_alloc();
    PreferLargePages(block, bytes);
    return block;
}

class OwningWorld final : public GW_World {
 public:
    OwningWorld(std::int32_t w, std::int32_t h, std::int32_t depth, std::int32_t row_stride)
        : GW_World(w, h, row_stride, nullptr),
          depth_(depth),
          pixels_(ZeroedBlock(static_cast<std::size_t>(row_stride) * static_cast<std::size_t>(h)), std::free) {
        data = pixels_.get();
    }
    std::int32_t Depth() const override { return depth_; }

 private:
    std::int32_t depth_;
    std::unique_ptr<void, decltype(&std::free)> pixels_;
};

// alpha + (max - alpha) * mask / full, rounded; exact for any two depths.
std::int64_t MergedAlpha(std::int64_t alpha, std::int64_t max, std::int64_t mask, std::int64_t full) {
    return alpha + ((max - alpha) * mask * 2 + full) / (2 * full);
}

template <class A, class M>
void MergeRows(const M_LRect& rect, const GW_UnoBuffer& mask, GW_World& world) {
    for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
        auto* pixels = reinterpret_cast<A*>(static_cast<std::uint8_t*>(world.data) + std::int64_t{y} * world.row_bytes);
        const M* samples = mask.Row<M>(y);
        for (std::int32_t x = rect.left; x < rect.right; ++x) {
            A& alpha = pixels[std::int64_t{x} * kComponents];
            alpha = static_cast<A>(MergedAlpha(alpha, SampleTraits<A>::kMax, samples[x], SampleTraits<M>::kMax));
        }
    }
}

template <class A>
void MergeInto(const M_LRect& rect, const GW_UnoBuffer& mask, GW_World& world) {
    if (mask.IsDeep()) {
        MergeRows<A, GW_Pixel16>(rect, mask, world);
    } else {
        MergeRows<A, GW_Pixel8>(rect, mask, world);
    }
}

}  // namespace

GW_World* GW_World::NewReference(GW_LayerDef* layer) {
    return layer->pixels == nullptr ? nullptr : new ReferringWorld(*layer->pixels);
}

GW_World* GW_World::New(std::int32_t width, std::int32_t height, std::int32_t depth, std::int32_t) {
    const std::int64_t row_bytes = std::int64_t{width} * kComponents * (depth == kDeepDepth ? 2 : 1);
    if (width < 0 || height < 0 || row_bytes > std::numeric_limits<std::int32_t>::max()) return nullptr;
    try {
        return new OwningWorld(width, height, depth, static_cast<std::int32_t>(row_bytes));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void GW_MergeMaskAlpha(const GW_ProgressInfo*, int, int, const M_LRect* rect, const GW_UnoBuffer* mask, void*, GW_World* world) {
    const M_LRect inside = {std::max(rect->left, 0), std::max(rect->top, 0), std::min({rect->right, mask->width, world->width}),
                            std::min({rect->bottom, mask->height, world->height})};
    if (world->Depth() == kDeepDepth) {
        MergeInto<GW_Pixel16>(inside, *mask, *world);
    } else {
        MergeInto<GW_Pixel8>(inside, *mask, *world);
    }
}
