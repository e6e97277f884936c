#pragma once

#include <functional>
#include <ostream>
#include <span>
#include <vector>

#include "host/progress.h"
#include "tests/support/quiet_reports.h"

// Every export with fixed arguments, as the tests of failures and of threads call it.

namespace support {

inline constexpr int kThrewNoMemory = -4;  // as the reference host's statuses of the same exceptions
inline constexpr int kThrewException = -1;

/// What a call came to.
struct Outcome {
    int code = 0;               // a status or a thrown int; the above for exceptions
    std::vector<float> result;  // all samples and the touched rectangle, or the points of all shapes
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

/// One export and its arguments. The inputs are shared by all calls, the outputs are new in each.
struct ExportCall {
    const char* name;
    bool polls;  // takes the progress record
    /// `arm` runs right before the export; faults are disarmed after it. Expects what must hold after a failure as well: a layer
    /// that was not touched, a list with what it held before and whole shapes, but for the outline that an inset was at.
    std::function<Outcome(const GW_ProgressInfo* progress, const std::function<void()>& arm)> call;

    Outcome Run(
        const GW_ProgressInfo* progress = nullptr, const std::function<void()>& arm = [] {}) const {
        return call(progress, arm);
    }
    friend void PrintTo(const ExportCall& e, std::ostream* out) { *out << e.name; }
};

/// All but the life cycle, and the life cycle, which no other call may be running beside.
std::span<const ExportCall> ExportCalls();
const ExportCall& BirthCall();

/// Memory accounted, engine objects of which `objects` were there before, open quiet scopes.
void ExpectNothingLeftOver(int objects);

/// The code of what `work` returns or throws.
int CodeOf(const std::function<int()>& work);

}  // namespace support
