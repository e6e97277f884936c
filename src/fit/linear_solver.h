#pragma once

#include "fit/vector_x.h"

/// Solves the system `matrix` x = `rhs` of 2 to 4 unknowns, the matrix stored row by row, and leaves x in `rhs`; several
/// right-hand sides, one after the other, are each replaced by their x. False when CFLinearFactors finds the matrix singular.
/// @throws int  kBrokenInvariant for another number of unknowns
bool Solve(const CFVectorX<float>& matrix, CFVectorX<float>& rhs);
