// Any outline moved by any distance.

#include <new>

#include "api/vrl.h"
#include "base/errors.h"
#include "fuzz/library.h"
#include "host/nub_error.h"

namespace {

/// Whether the inset succeeded; only the documented exceptions may say that it did not.
template <class Work>
bool Succeeds(Work work) {
    try {
        work();
        return true;
    } catch (int) {
    } catch (const NUB_T_MT::CNUBError&) {
    } catch (const QELException&) {
    } catch (const std::bad_alloc&) {
    }
    return false;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace fuzz;
    const Session session;
    ByteReader in({data, size});
    const bool quality = in.Flag();
    const auto join = static_cast<VRL_Join>(in.IsHostile() ? in.Byte() : in.Between(1, 3));
    const double distance = in.Number(-24, 24), aspect = in.Number(0.25, 4);
    const std::unique_ptr<DY_Shape> shape = ReadShape(in);

    std::vector<boost::shared_ptr<DY_Shape>> shapes(2);
    const bool done = Succeeds([&] {
        join == kVRLJoinRound ? VRL_InsetShape(*shape, quality, distance, aspect, shapes)
                              : VRL_InsetShapeJoin(*shape, quality, distance, aspect, join, shapes);
    });
    Require(done || in.IsHostile(), "an ordinary outline can be moved");
    Require(shapes.size() >= 2 && !shapes[0] && !shapes[1], "the list keeps what it held");
    for (std::size_t i = 2; i < shapes.size(); ++i) RequireOutline(*shapes[i], !in.IsHostile());
    return 0;
}
