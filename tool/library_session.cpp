#include "tool/library_session.h"

#include "api/vrl.h"
#include "refhost/services/reports.h"
#include "tool/failure.h"
#include "tool/interrupt.h"

namespace vrltool {

LibrarySession::LibrarySession() {
    refhost::SetReportSink([this](const refhost::Report& report) {
        const std::scoped_lock lock(lock_);
        std::string& reports = reports_[std::this_thread::get_id()];
        reports.append(reports.empty() ? "" : "; ").append(report.text);
        return 0;
    });
    VRL_Birth();
}

LibrarySession::~LibrarySession() {
    VRL_Death();
    refhost::SetReportSink(nullptr);
}

void LibrarySession::Check(std::int32_t status, const std::string& subject) {
    const std::string reports = TakeReports();
    if (status == 0) return;
    ThrowIfInterrupted();
    throw Failure(subject + ": " + (reports.empty() ? "failed with status " + std::to_string(status) : reports));
}

std::string LibrarySession::TakeReports() {
    const std::scoped_lock lock(lock_);
    const auto node = reports_.extract(std::this_thread::get_id());
    return node.empty() ? std::string() : node.mapped();
}

}  // namespace vrltool
