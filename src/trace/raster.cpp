#include "trace/raster.h"

#include <algorithm>
#include <cstddef>

#include "base/errors.h"

namespace {

int ComponentCount(std::int32_t model) { return model == kModelThree ? 3 : model == kModelFour ? 4 : 1; }

}  // namespace

bool IsSameColour(const RPSample& a, const RPSample& b) {
    return a.model == b.model && std::equal(a.components, a.components + ComponentCount(a.model), b.components);
}

RPRaster::RPRaster(const GW_World& world) : world_(&world), height_(world.height), width_(world.width) {}

void RPRaster::Sample(RPSample& sample) const {
    sample.model = model_;
    std::fill_n(sample.components, ComponentCount(model_), -1);
    if (sample.x < 0 || sample.x >= width_ || sample.y < 0 || sample.y >= height_) return;
    if (model_ != kModelThree) throw kUnsupportedKind;
    std::copy_n(Row(sample.y) + std::ptrdiff_t{4} * sample.x + 1, 3, sample.components);
}

const std::uint8_t* RPRaster::Row(std::int32_t y) const {
    return static_cast<const std::uint8_t*>(world_->data) + std::ptrdiff_t{y} * world_->row_bytes;
}
