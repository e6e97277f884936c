#include "fit/linear_solver.h"

#include "base/errors.h"
#include "fit/linear_factors.h"

namespace {

template <std::size_t n>
bool SolveSystem(const CFVectorX<float>& matrix, CFVectorX<float>& rhs) {
    CFLinearFactors<n> factors;
    if (!factors.Decompose(&matrix[0])) return false;
    for (std::size_t first = 0; first < rhs.Size(); first += n) factors.Substitute(&rhs[first]);
    return true;
}

}  // namespace

bool Solve(const CFVectorX<float>& matrix, CFVectorX<float>& rhs) {
    switch (matrix.Size()) {
        case 2 * 2:
            return SolveSystem<2>(matrix, rhs);
        case 3 * 3:
            return SolveSystem<3>(matrix, rhs);
        case 4 * 4:
            return SolveSystem<4>(matrix, rhs);
        default:
            throw kBrokenInvariant;
    }
}
