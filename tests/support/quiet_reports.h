#pragma once

#include "refhost/services/faults.h"
#include "refhost/services/reports.h"

namespace support {

/// Reports go into an empty log, and to nobody, while it lives; at its end faults are disarmed.
class QuietReports {
 public:
    QuietReports() {
        refhost::SetReportSink([](const refhost::Report&) { return 0; });
        refhost::TakeReports();
    }
    QuietReports(const QuietReports&) = delete;
    QuietReports& operator=(const QuietReports&) = delete;
    ~QuietReports() {
        refhost::DisarmFaults();
        refhost::SetReportSink({});
    }
};

}  // namespace support
