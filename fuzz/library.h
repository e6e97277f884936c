#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "fuzz/byte_reader.h"
#include "fuzz/require.h"
#include "host/shape.h"
#include "host/world.h"

namespace fuzz {

/// The time of one input: the library is bound, reports go nowhere. At its end nothing may be left of the work.
class Session {
 public:
    Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

 private:
    int objects_;
};

/// A shape of a few vertices. A hostile one may have an item count that is no outline's, or feather points off the outline.
std::unique_ptr<DY_Shape> ReadShape(ByteReader& in);
std::vector<WEX_Item> ItemsOf(const DY_Shape& shape);

/// An affine map without large factors; a hostile one may be anything.
std::optional<M_Matrix3> ReadTransform(ByteReader& in);

/// What the library promises of a shape it made: a closed outline of whole vertices, with finite numbers where those given
/// were ordinary.
void RequireOutline(const DY_Shape& shape, bool finite);

/// An image of the fuzzer's bytes, repeated, whose rows are padded except for the last one.
class ByteWorld final : public GW_World {
 public:
    ByteWorld(std::int32_t w, std::int32_t h, std::int32_t depth, std::int32_t padding);
    std::int32_t Depth() const override { return depth_; }
    std::int32_t SampleBytes() const { return depth_ / 8; }

    std::vector<std::uint8_t> bytes;

 private:
    std::int32_t depth_;
};

}  // namespace fuzz
