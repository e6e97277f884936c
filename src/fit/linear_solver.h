#pragma once

#include "fit/vector_x.h"

/// Solves the system `matrix` x = `rhs` of 2 to 4 unknowns, the matrix stored row by row, and leaves x in `rhs`; several
/// right-hand sides, one after the other, are each replaced by their x. LU decomposition with implicit row scaling and partial
/// pivoting (Press et al., Numerical Recipes, section 2.3). False, with `rhs` undefined, when a row's largest entry or a pivot
/// is within 1e-6 of 0. Both arguments are changed.
/// @throws int  kBrokenInvariant for another number of unknowns
bool Solve(CFVectorX<float>& matrix, CFVectorX<float>& rhs);
