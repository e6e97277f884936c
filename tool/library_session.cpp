#include "tool/library_session.h"

#include "api/vrl.h"
#include "refhost/services/reports.h"
#include "tool/failure.h"
#include "tool/interrupt.h"

namespace vrltool {

LibrarySession::LibrarySession() {
    refhost::SetReportSink([this](const refhost::Report& report) {
        reports_.append(reports_.empty() ? "" : "; ").append(report.text);
        return 0;
    });
    VRL_Birth();
}

LibrarySession::~LibrarySession() {
    VRL_Death();
    refhost::SetReportSink(nullptr);
}

void LibrarySession::Check(std::int32_t status, const std::string& subject) {
    if (status == 0) return;
    ThrowIfInterrupted();
    throw Failure(subject + ": " + (reports_.empty() ? "failed with status " + std::to_string(status) : reports_));
}

}  // namespace vrltool
