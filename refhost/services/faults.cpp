#include "refhost/services/faults.h"

#include <mutex>
#include <optional>

namespace refhost {

std::atomic<bool> g_faults_armed{false};

namespace {

struct CallFault {
    std::optional<HostCall> call;  // none: any call
    int remaining;                 // calls until it strikes
    int status;
};

struct AllocationFault {
    int remaining;  // allocations until the first failing one
    int count;      // allocations that fail from there on
};

std::mutex g_lock;
std::optional<CallFault> g_call_fault;
std::optional<AllocationFault> g_allocation_fault;
std::atomic<bool> g_struck{false};

void Arm(std::optional<CallFault> call, std::optional<AllocationFault> allocation) {
    const std::scoped_lock lock(g_lock);
    g_call_fault = call;
    g_allocation_fault = allocation;
    g_struck = false;
    g_faults_armed = call || allocation;
}

}  // namespace

void FailHostCall(HostCall call, int nth, int status) { Arm(CallFault{call, nth, status}, {}); }
void FailAnyHostCall(int nth, int status) { Arm(CallFault{{}, nth, status}, {}); }
void FailAllocations(int nth, int count) { Arm({}, AllocationFault{nth, count}); }

void DisarmFaults() {
    const bool struck = g_struck;
    Arm({}, {});
    g_struck = struck;
}

bool FaultStruck() { return g_struck; }

int CountHostCall(HostCall call) {
    const std::scoped_lock lock(g_lock);
    if (!g_call_fault || (g_call_fault->call && *g_call_fault->call != call)) return 0;
    if (--g_call_fault->remaining != 0) return 0;
    g_struck = true;
    return g_call_fault->status;
}

bool CountAllocation() {
    const std::scoped_lock lock(g_lock);
    if (!g_allocation_fault) return false;
    if (g_allocation_fault->remaining > 1) {
        --g_allocation_fault->remaining;
        return false;
    }
    if (g_allocation_fault->count == 0) return false;
    --g_allocation_fault->count;
    g_struck = true;
    return true;
}

}  // namespace refhost
