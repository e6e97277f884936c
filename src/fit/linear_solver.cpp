#include "fit/linear_solver.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "base/errors.h"
#include "base/narrow.h"

namespace {

constexpr float kSingular = 1e-6F;

// The size `n` of the system is known at compile time, so that the loops unroll: thousands of tiny systems are solved.

/// The reciprocal of the largest magnitude of every row; false when a row is zero.
template <std::size_t n>
bool RowScales(const float* matrix, float* scales) {
    for (std::size_t row = 0; row < n; ++row) {
        float largest = 0.0F;
        for (std::size_t column = 0; column < n; ++column) largest = std::max(largest, std::abs(matrix[row * n + column]));
        if (!(largest > kSingular)) return false;
        scales[row] = 1.0F / largest;
    }
    return true;
}

/// The entry less the products of the part of its row and its column that are decomposed already, `terms` of them. Summed in
/// double and rounded once.
template <std::size_t n>
float Reduced(const float* matrix, std::size_t row, std::size_t column, std::size_t terms) {
    auto sum = static_cast<double>(matrix[row * n + column]);
    for (std::size_t k = 0; k < terms; ++k) {
        sum -= static_cast<double>(matrix[row * n + k]) * static_cast<double>(matrix[k * n + column]);
    }
    return NarrowToFloat(sum);
}

/// The factors of a matrix whose rows were exchanged: the upper one on and above the diagonal and the lower one, with ones on
/// its diagonal, below. `rows` names the row that went to each place.
template <std::size_t n>
struct Factors {
    float* matrix;
    std::size_t rows[n];
};

template <std::size_t n>
void SwapRows(Factors<n>& factors, float* scales, std::size_t a, std::size_t b) {
    if (a == b) return;
    for (std::size_t column = 0; column < n; ++column) std::swap(factors.matrix[a * n + column], factors.matrix[b * n + column]);
    std::swap(scales[a], scales[b]);
    std::swap(factors.rows[a], factors.rows[b]);
}

/// False when the matrix is singular.
template <std::size_t n>
bool Decompose(Factors<n>& factors) {
    float* const matrix = factors.matrix;
    float scales[n];
    if (!RowScales<n>(matrix, scales)) return false;
    std::iota(factors.rows, factors.rows + n, std::size_t{0});
    for (std::size_t column = 0; column < n; ++column) {
        for (std::size_t row = 0; row < column; ++row) matrix[row * n + column] = Reduced<n>(matrix, row, column, row);
        std::size_t pivot = column;
        float best = -1.0F;
        for (std::size_t row = column; row < n; ++row) {
            matrix[row * n + column] = Reduced<n>(matrix, row, column, column);
            const float size = scales[row] * std::abs(matrix[row * n + column]);
            if (size > best) {
                best = size;
                pivot = row;
            }
        }
        SwapRows<n>(factors, scales, column, pivot);
        const float diagonal = matrix[column * n + column];
        if (!(std::abs(diagonal) > kSingular)) return false;
        for (std::size_t row = column + 1; row < n; ++row) matrix[row * n + column] /= diagonal;
    }
    return true;
}

template <std::size_t n>
void Substitute(const Factors<n>& factors, float* rhs) {
    float x[n];
    const auto term = [&](std::size_t row, std::size_t k) {
        return static_cast<double>(factors.matrix[row * n + k]) * static_cast<double>(x[k]);
    };
    for (std::size_t row = 0; row < n; ++row) {
        auto sum = static_cast<double>(rhs[factors.rows[row]]);
        for (std::size_t k = 0; k < row; ++k) sum -= term(row, k);
        x[row] = NarrowToFloat(sum);
    }
    for (std::size_t row = n; row-- > 0;) {
        auto sum = static_cast<double>(x[row]);
        for (std::size_t k = row + 1; k < n; ++k) sum -= term(row, k);
        x[row] = NarrowToFloat(sum / static_cast<double>(factors.matrix[row * n + row]));
    }
    std::copy_n(x, n, rhs);
}

template <std::size_t n>
bool SolveSystem(CFVectorX<float>& matrix, CFVectorX<float>& rhs) {
    Factors<n> factors{&matrix[0], {}};
    if (!Decompose<n>(factors)) return false;
    for (std::size_t first = 0; first < rhs.Size(); first += n) Substitute<n>(factors, &rhs[first]);
    return true;
}

}  // namespace

bool Solve(CFVectorX<float>& matrix, CFVectorX<float>& rhs) {
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
