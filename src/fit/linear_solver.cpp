#include "fit/linear_solver.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/narrow.h"

namespace {

constexpr float kSingular = 1e-6F;

using Vector = CFVectorX<float>;

/// The reciprocal of the largest magnitude of every row; false when a row is zero.
bool RowScales(const Vector& matrix, Vector& scales) {
    const std::size_t n = scales.Size();
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
float Reduced(const Vector& matrix, std::size_t n, std::size_t row, std::size_t column, std::size_t terms) {
    auto sum = static_cast<double>(matrix[row * n + column]);
    for (std::size_t k = 0; k < terms; ++k) {
        sum -= static_cast<double>(matrix[row * n + k]) * static_cast<double>(matrix[k * n + column]);
    }
    return NarrowToFloat(sum);
}

void SwapRows(Vector& matrix, Vector& scales, Vector& rhs, std::size_t a, std::size_t b) {
    if (a == b) return;
    const std::size_t n = rhs.Size();
    for (std::size_t column = 0; column < n; ++column) std::swap(matrix[a * n + column], matrix[b * n + column]);
    std::swap(scales[a], scales[b]);
    std::swap(rhs[a], rhs[b]);
}

/// Leaves the upper factor on and above the diagonal and the lower one, with ones on its diagonal, below; `rhs` in the order
/// of the exchanged rows.
bool Decompose(Vector& matrix, Vector& rhs) {
    const std::size_t n = rhs.Size();
    Vector scales(n);
    if (!RowScales(matrix, scales)) return false;
    for (std::size_t column = 0; column < n; ++column) {
        for (std::size_t row = 0; row < column; ++row) matrix[row * n + column] = Reduced(matrix, n, row, column, row);
        std::size_t pivot = column;
        float best = -1.0F;
        for (std::size_t row = column; row < n; ++row) {
            matrix[row * n + column] = Reduced(matrix, n, row, column, column);
            const float size = scales[row] * std::abs(matrix[row * n + column]);
            if (size > best) {
                best = size;
                pivot = row;
            }
        }
        SwapRows(matrix, scales, rhs, column, pivot);
        const float diagonal = matrix[column * n + column];
        if (!(std::abs(diagonal) > kSingular)) return false;
        for (std::size_t row = column + 1; row < n; ++row) matrix[row * n + column] /= diagonal;
    }
    return true;
}

}  // namespace

bool Solve(CFVectorX<float>& matrix, CFVectorX<float>& rhs) {
    if (!Decompose(matrix, rhs)) return false;
    const std::size_t n = rhs.Size();
    const auto term = [&](std::size_t row, std::size_t k) {
        return static_cast<double>(matrix[row * n + k]) * static_cast<double>(rhs[k]);
    };
    for (std::size_t row = 0; row < n; ++row) {
        auto sum = static_cast<double>(rhs[row]);
        for (std::size_t k = 0; k < row; ++k) sum -= term(row, k);
        rhs[row] = NarrowToFloat(sum);
    }
    for (std::size_t row = n; row-- > 0;) {
        auto sum = static_cast<double>(rhs[row]);
        for (std::size_t k = row + 1; k < n; ++k) sum -= term(row, k);
        rhs[row] = NarrowToFloat(sum / static_cast<double>(matrix[row * n + row]));
    }
    return true;
}
