#pragma once

#include <cstdint>
#include <exception>

#include "host/services.h"

/// Runs `work` and turns what leaves it into the status an export returns: 0, a thrown int, or what the host makes of
/// an exception after reporting it.
template <class Work>
std::int32_t VRLp_StatusOf(Work&& work) {
    try {
        work();
        return 0;
    } catch (int status) {
        return status;
    } catch (const std::exception& error) {
        return YQ_TranslateAndReportException(error);
    }
}
