#include "refhost/engine/path_view.h"

#include "refhost/engine/engine_error.h"

namespace refhost {

void CheckOperators(const PathView& path) {
    const auto check = [](bool sound) {
        if (!sound) throw EngineError{&kErrorBadPath};
    };
    const std::span<const PIVPointType> operators = path.operators;
    check(operators.size() == path.Size());
    check(operators.empty() || operators.front() == kPIVMove);
    for (std::size_t i = 0; i < operators.size(); ++i) {
        check(operators[i] <= kPIVClose);
        if (operators[i] != kPIVCurve) continue;
        check(operators.size() - i >= 3 && operators[i + 1] == kPIVCurve && operators[i + 2] == kPIVCurve);
        i += 2;
    }
}

}  // namespace refhost
