#pragma once

#include <cstddef>

#include "fit/bezier.h"
#include "fit/curve_view.h"
#include "fit/vector_x.h"

/// Finds the cubic nearest to points, in the sum of squares at their parameters, that meets the constraints of its ends.
/// The storage is used again for every fit.
class CFCurveEquations {
 public:
    /// The nearest curve; a straight one with handles at thirds of the chord where the points do not fix it.
    CFBezier3 Fit(const CFCurvePoints& points, const CF1CurveViewConstraints& constraints);

    /// Sums over the points, of products of the factors of both end derivatives and of what is left of the point without them.
    struct HermiteSums {
        double start_start = 0.0, start_end = 0.0, end_end = 0.0;
        double start_x = 0.0, start_y = 0.0, end_x = 0.0, end_y = 0.0;
    };
    struct EndDerivatives {
        CFPoint start, end;
    };

 private:
    /// A direction in which an end derivative goes by an unknown multiple.
    struct Unknown {
        bool at_end;
        CFPoint direction;
    };

    bool SolveFor(const HermiteSums& sums, const CF1CurveViewConstraints& constraints, EndDerivatives& derivatives);
    bool SolveForFreeEnds(const HermiteSums& sums, EndDerivatives& derivatives);
    /// Adds the multiples of the unknowns to the derivatives; false when the equations do not fix them.
    template <std::size_t kCount>
    bool SolveFor(const HermiteSums& sums, const Unknown (&unknowns)[kCount], EndDerivatives& derivatives);

    CFVectorX<float> matrix_, rhs_;
};
