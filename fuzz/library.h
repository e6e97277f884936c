#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "fuzz/byte_reader.h"
#include "fuzz/require.h"
#include "host/shape.h"

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

/// An affine map without large factors; a hostile one may be anything.
std::optional<M_Matrix3> ReadTransform(ByteReader& in);

/// What the library promises of a shape it made: a closed outline of whole vertices, with finite numbers where those given
/// were ordinary.
void RequireOutline(const DY_Shape& shape, bool finite);

}  // namespace fuzz
