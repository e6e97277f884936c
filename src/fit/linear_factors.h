#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

#include "base/narrow.h"

/// A square matrix of `n` rows, stored row by row, taken apart into a lower and an upper one: LU decomposition with implicit row
/// scaling and partial pivoting (Press et al., Numerical Recipes, section 2.3). Thousands of tiny systems are solved, so their
/// size is known at compile time and the loops unroll.
template <std::size_t n>
class CFLinearFactors {
 public:
    /// False when the matrix is singular: a row's largest entry or a pivot is within 1e-6 of 0.
    bool Decompose(const float* matrix);
    /// Puts the unknowns in place of the right-hand side.
    void Substitute(float* rhs) const;

 private:
    static constexpr float kSingular = 1e-6F;

    bool SetRowScales(float* scales) const;
    float Reduced(std::size_t row, std::size_t column, std::size_t terms) const;
    void SwapRows(float* scales, std::size_t a, std::size_t b);

    float matrix_[n * n];  // the upper factor on and above the diagonal; below it the lower one, which has ones on its diagonal
    std::size_t rows_[n];  // the row that went to each place
};

template <std::size_t n>
bool CFLinearFactors<n>::Decompose(const float* matrix) {
    std::copy_n(matrix, n * n, matrix_);
    float scales[n];
    if (!SetRowScales(scales)) return false;
    std::iota(rows_, rows_ + n, std::size_t{0});
    for (std::size_t column = 0; column < n; ++column) {
        for (std::size_t row = 0; row < column; ++row) matrix_[row * n + column] = Reduced(row, column, row);
        std::size_t pivot = column;
        float best = -1.0F;
        for (std::size_t row = column; row < n; ++row) {
            matrix_[row * n + column] = Reduced(row, column, column);
            const float size = scales[row] * std::abs(matrix_[row * n + column]);
            if (size > best) {
                best = size;
                pivot = row;
            }
        }
        SwapRows(scales, column, pivot);
        const float diagonal = matrix_[column * n + column];
        if (!(std::abs(diagonal) > kSingular)) return false;
        for (std::size_t row = column + 1; row < n; ++row) matrix_[row * n + column] /= diagonal;
    }
    return true;
}

/// The reciprocal of the largest magnitude of every row; false when a row is zero.
template <std::size_t n>
bool CFLinearFactors<n>::SetRowScales(float* scales) const {
    for (std::size_t row = 0; row < n; ++row) {
        float largest = 0.0F;
        for (std::size_t column = 0; column < n; ++column) largest = std::max(largest, std::abs(matrix_[row * n + column]));
        if (!(largest > kSingular)) return false;
        scales[row] = 1.0F / largest;
    }
    return true;
}

/// The entry less the products of the part of its row and its column that are decomposed already, `terms` of them. Summed in
/// double and rounded once.
template <std::size_t n>
float CFLinearFactors<n>::Reduced(std::size_t row, std::size_t column, std::size_t terms) const {
    auto sum = static_cast<double>(matrix_[row * n + column]);
    for (std::size_t k = 0; k < terms; ++k) {
        sum -= static_cast<double>(matrix_[row * n + k]) * static_cast<double>(matrix_[k * n + column]);
    }
    return NarrowToFloat(sum);
}

template <std::size_t n>
void CFLinearFactors<n>::SwapRows(float* scales, std::size_t a, std::size_t b) {
    if (a == b) return;
    for (std::size_t column = 0; column < n; ++column) std::swap(matrix_[a * n + column], matrix_[b * n + column]);
    std::swap(scales[a], scales[b]);
    std::swap(rows_[a], rows_[b]);
}

template <std::size_t n>
void CFLinearFactors<n>::Substitute(float* rhs) const {
    float x[n];
    const auto term = [&](std::size_t row, std::size_t k) {
        return static_cast<double>(matrix_[row * n + k]) * static_cast<double>(x[k]);
    };
    for (std::size_t row = 0; row < n; ++row) {
        auto sum = static_cast<double>(rhs[rows_[row]]);
        for (std::size_t k = 0; k < row; ++k) sum -= term(row, k);
        x[row] = NarrowToFloat(sum);
    }
    for (std::size_t row = n; row-- > 0;) {
        auto sum = static_cast<double>(x[row]);
        for (std::size_t k = row + 1; k < n; ++k) sum -= term(row, k);
        x[row] = NarrowToFloat(sum / static_cast<double>(matrix_[row * n + row]));
    }
    std::copy_n(x, n, rhs);
}
