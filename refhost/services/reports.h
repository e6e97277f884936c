#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/export.h"

namespace refhost {

/// One report a module made to the host.
struct Report {
    enum class Kind { kCoded, kPlain, kFailedVerification, kException };
    Kind kind;
    int code;  // of a coded report, else 0
    int line;  // of a failed verification, else 0
    std::string text;
};

/// Receives every report that is not quiet; its result is the status the reporting call returns.
using ReportSink = std::function<int(const Report&)>;

/// Replaces the sink. An empty one restores the default, which writes a line to standard error and returns 0.
VRL_HOST_API void SetReportSink(ReportSink sink);

/// Every report of the process since the last call, quiet ones included.
VRL_HOST_API std::vector<Report> TakeReports();

/// How many quiet-error scopes the calling thread has open.
VRL_HOST_API int QuietErrorDepth();

}  // namespace refhost
