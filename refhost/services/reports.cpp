#include "refhost/services/reports.h"

#include <cstdio>
#include <exception>
#include <mutex>
#include <new>
#include <utility>

#include "host/services.h"
#include "refhost/services/faults.h"
#include "refhost/services/status.h"

namespace refhost {
namespace {

constexpr std::size_t kLogLimit = 1000;  // reports kept for a reader that never comes

int WriteToStandardError(const Report& report) {
    std::fprintf(stderr, "%s\n", report.text.c_str());
    return 0;
}

std::mutex g_lock;
std::vector<Report> g_log;
ReportSink g_sink = WriteToStandardError;
thread_local int g_quiet_depth = 0;

int File(Report report) {
    if (const int status = InjectedStatus(HostCall::kReport)) return status;
    ReportSink sink;
    {
        const std::scoped_lock lock(g_lock);
        if (g_log.size() == kLogLimit) g_log.clear();
        g_log.push_back(report);
        sink = g_sink;
    }
    return g_quiet_depth > 0 ? 0 : sink(report);
}

}  // namespace

void SetReportSink(ReportSink sink) {
    const std::scoped_lock lock(g_lock);
    g_sink = sink ? std::move(sink) : WriteToStandardError;
}

std::vector<Report> TakeReports() {
    const std::scoped_lock lock(g_lock);
    return std::exchange(g_log, {});
}

int QuietErrorDepth() { return g_quiet_depth; }

}  // namespace refhost

using refhost::File;
using refhost::Report;

const char* YQ_ZLookupLStrCache(const YQ_LStrTable* table, int index, int, int) {
    const char* key = table->entries[index].key;
    const char* text = key;
    while (*text != '\0' && *text != '=') ++text;
    return *text == '=' ? text + 1 : key;
}

int YQp_ReportCodedErrString(int code, int, int, const char* text) { return File({Report::Kind::kCoded, code, 0, text}); }

int YQp_ReportErrString(int, int, const char* text) { return File({Report::Kind::kPlain, 0, 0, text}); }

int YQ_ReportFailedVerification(int, int line, int, const char* text) {
    return File({Report::Kind::kFailedVerification, 0, line, text});
}

int YQ_TranslateAndReportException(const std::exception& error) {
    const bool no_memory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
    try {
        File({Report::Kind::kException, 0, 0, error.what()});
    } catch (const std::exception&) {
        // Not even the report could be made; the status still tells.
    }
    return no_memory ? refhost::kStatusNoMemory : refhost::kStatusFailed;
}

int YQ_StartQuietErrorsOnCurrentThread(int) {
    if (const int status = refhost::InjectedStatus(refhost::HostCall::kStartQuietErrors)) return status;
    ++refhost::g_quiet_depth;
    return 0;
}

void YQ_EndQuietErrorsOnCurrentThread() { --refhost::g_quiet_depth; }
