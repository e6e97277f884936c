#pragma once

#include "base/errors.h"
#include "host/services.h"

/// Reports why a call cannot be served.
/// @throws int  kFailedCheck
[[noreturn]] inline void VRLp_Refuse(const char* reason) {
    constexpr int kReportCode = 8;
    YQp_ReportErrString(0, kReportCode, reason);
    throw kFailedCheck;
}
