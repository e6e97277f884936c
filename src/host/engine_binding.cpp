#include "host/engine_binding.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "host/nub_error.h"

namespace NUB_T_MT {
namespace {

struct ProcedureName {
    const char* method;
    const char* procedure;
};

// The lookup procedure and the address of the host's unregister count; null while unbound.
std::atomic<NUBAddressProc> g_lookup{nullptr};
std::atomic<std::int32_t*> g_unregister_count{nullptr};

void* LookUp(const char* interface_name, const ProcedureName& name) {
    const NUBAddressProc lookup = g_lookup.load(std::memory_order_acquire);
    return lookup == nullptr ? nullptr : lookup(interface_name, name.method, name.procedure);
}

std::int32_t UnregisterCount() {
    std::int32_t* count = g_unregister_count.load(std::memory_order_acquire);
    return count == nullptr ? 0 : std::atomic_ref(*count).load(std::memory_order_acquire);
}

[[noreturn]] void ThrowMissingProcedure() {
    constexpr std::int32_t kMissingProcedure = 2;
    const bool is_bound = g_lookup.load(std::memory_order_acquire) != nullptr;
    throw CNUBError("NUB", kMissingProcedure,
                    is_bound ? "missing procedure" : "no graphics engine is bound: call VRL_Birth first");
}

// The procedures of one engine interface. Filled without a lock: every thread that refills it writes the same addresses.
// A table counts as filled when it has every procedure that the library calls; until then each use looks again, so that
// what is missing before a birth, or was missing at the last one, is found once it is there.
template <std::size_t N>
class InterfaceTable {
 public:
    /// The first `called` of the names are those the library calls.
    constexpr InterfaceTable(const char* interface_name, const ProcedureName (&names)[N], std::size_t called = N)
        : interface_name_(interface_name), names_(names), called_(called) {}

    bool IsFilled() {
        Refresh();
        return filled_.load(std::memory_order_relaxed);
    }

    template <class Proc>
    Proc Get(std::size_t slot) {
        Refresh();
        void* address = slots_[slot].load(std::memory_order_relaxed);
        if (address == nullptr) ThrowMissingProcedure();
        return reinterpret_cast<Proc>(address);
    }

    void Terminate() noexcept {
        filled_.store(false, std::memory_order_release);
        for (auto& slot : slots_) slot.store(nullptr, std::memory_order_relaxed);
    }

 private:
    void Refresh() {
        const std::int32_t count = UnregisterCount();
        if (filled_.load(std::memory_order_acquire) && count_when_filled_.load(std::memory_order_relaxed) == count) return;
        bool has_called = true;
        for (std::size_t slot = 0; slot < N; ++slot) {
            void* address = LookUp(interface_name_, names_[slot]);
            slots_[slot].store(address, std::memory_order_relaxed);
            has_called = has_called && (address != nullptr || slot >= called_);
        }
        count_when_filled_.store(count, std::memory_order_relaxed);
        filled_.store(has_called, std::memory_order_release);
    }

    const char* interface_name_;
    const ProcedureName (&names_)[N];
    std::size_t called_;
    std::atomic<void*> slots_[N] = {};
    std::atomic<std::int32_t> count_when_filled_{0};
    std::atomic<bool> filled_{false};
};

// Names of every interface's procedures. Those the library calls come first, in the order of the enumeration beside them.

enum MemorySlot { kRealloc, kFree };
constexpr ProcedureName kMemoryNames[] = {{"Realloc", "NUBMemoryReallocProc"}, {"Free", "NUBMemoryFreeProc"}};
InterfaceTable g_memory("NUBMemoryInterface", kMemoryNames);

constexpr ProcedureName kNewPathNames[] = {{"NewPath", "GRXNewPathNewPathV4"}};
InterfaceTable g_new_path("GRXNewPathInterface", kNewPathNames);

enum PathSlot { kPathAddRef, kPathRelease, kPathGetData, kPathTransform, kCalledPathSlots };
constexpr ProcedureName kPathNames[] = {
    {"AddRef", "GRXPathAddRefProc"},
    {"Release", "GRXPathReleaseProc"},
    {"GetPathData", "GRXPathGetPathDataProc"},
    {"Transform", "GRXPathTransformProc"},
    {"Copy", "GRXPathCopyProc"},
    {"Append", "GRXPathAppendProc"},
    {"Reverse", "GRXPathReverseProc"},
    {"IsEmpty", "GRXPathIsEmptyProc"},
    {"IsEqual", "GRXPathIsEqualProc"},
    {"GetEntryCount", "GRXPathGetEntryCountProc"},
    {"GetSubpathCount", "GRXPathGetSubpathCountProc"},
    {"GetCurrentPoint", "GRXPathGetCurrentPointProc"},
    {"GetBounds", "GRXPathGetBoundsProc"},
    {"GetControlBounds", "GRXPathGetControlBoundsProc"},
    {"GetArea", "GRXPathGetAreaProc"},
    {"ContainsPoint", "GRXPathContainsPointProc"},
    {"Flatten", "GRXPathFlattenProc"},
};
static_assert(std::size(kPathNames) == 17);
InterfaceTable g_path("GRXPathInterface", kPathNames, kCalledPathSlots);

enum ProgressSlot { kNewNullProgress, kProgressRelease };
constexpr ProcedureName kProgressNames[] = {{"NewNullProgress", "NUBProgressNewNullProgressProc"},
                                            {"Release", "NUBProgressReleaseProc"}};
InterfaceTable g_progress("NUBProgressInterface", kProgressNames);

enum PainterSlot { kNewFill, kCalledPainterSlots };
constexpr ProcedureName kPainterNames[] = {{"NewFill", "TAV_BezierPathRasterPainterNewFillProc"},
                                           {"NewStroke", "TAV_BezierPathRasterPainterNewStrokeProc"}};
InterfaceTable g_painter("TAV_BezierPathRasterPainterInterface", kPainterNames, kCalledPainterSlots);

enum ContainerSlot { kContainerRelease, kContainerGetSignature };
constexpr ProcedureName kContainerNames[] = {{"Release", "NUBContainerReleaseProc"},
                                             {"GetSignature", "NUBContainerGetSignatureProc"}};
InterfaceTable g_container("NUBContainerInterface", kContainerNames);

// Method tables of engine objects, one per signature. All is read and written under one lock.
struct ObjectTable {
    std::string signature;
    PIVGetInfoProc get_info = nullptr;  // the painters' one method; null while it is not bound
    std::int32_t count_when_bound = 0;
};
std::mutex g_object_lock;
std::vector<ObjectTable> g_object_tables;

void Bind(ObjectTable& table) {
    const std::int32_t count = UnregisterCount();
    if (table.get_info != nullptr && table.count_when_bound == count) return;
    table.get_info =
        reinterpret_cast<PIVGetInfoProc>(LookUp(table.signature.c_str(), {"GetInfo", "PIVRasterPainterGetInfoProc"}));
    table.count_when_bound = count;
}

ObjectTable& FindOrAddTable(const char* signature) {
    const auto found = std::ranges::find(g_object_tables, signature, &ObjectTable::signature);
    return found != g_object_tables.end() ? *found : g_object_tables.emplace_back(ObjectTable{signature});
}

constexpr const char* kMissingInterface = "Missing Interface";

}  // namespace

bool StartBinding(NUBAddressProc proc) {
    g_lookup.store(proc, std::memory_order_release);
    const auto count_address = reinterpret_cast<NUBGetUnregisterCountAddrProc>(
        LookUp("NUBInterface", {"GetUnregisterCountAddr", "NUBGetUnregisterCountAddr"}));
    g_unregister_count.store(count_address == nullptr ? nullptr : count_address(), std::memory_order_release);
    return count_address != nullptr && g_memory.IsFilled() && g_container.IsFilled();
}

void EndBinding() noexcept {
    if (g_lookup.load(std::memory_order_acquire) == nullptr) return;
    g_memory.Terminate();
    g_new_path.Terminate();
    g_path.Terminate();
    g_progress.Terminate();
    g_painter.Terminate();
    g_container.Terminate();
    {
        const std::scoped_lock lock(g_object_lock);
        g_object_tables.clear();
    }
    g_unregister_count.store(nullptr, std::memory_order_release);
    g_lookup.store(nullptr, std::memory_order_release);
}

void BindNewPathInterface() {
    if (!g_new_path.IsFilled()) throw CNUBError(kMissingInterface);
}
void BindPathInterface() {
    if (!g_path.IsFilled()) throw CNUBError(kMissingInterface);
}
void BindPainterInterface() {
    if (!g_painter.IsFilled()) throw CNUBError(kMissingInterface);
}
void BindContainerInterface() {
    if (!g_container.IsFilled()) throw CNUBError(kMissingInterface);
}

NUBReallocProc MemoryRealloc() { return g_memory.Get<NUBReallocProc>(kRealloc); }
NUBFreeProc MemoryFree() { return g_memory.Get<NUBFreeProc>(kFree); }

GRXNewPathProc NewPath() { return g_new_path.Get<GRXNewPathProc>(0); }

GRXPathCountProc PathAddRef() { return g_path.Get<GRXPathCountProc>(kPathAddRef); }
GRXPathCountProc PathRelease() { return g_path.Get<GRXPathCountProc>(kPathRelease); }
GRXPathGetDataProc PathGetData() { return g_path.Get<GRXPathGetDataProc>(kPathGetData); }
GRXPathTransformProc PathTransform() { return g_path.Get<GRXPathTransformProc>(kPathTransform); }

GRXOffsetPathProc GetOffsetPath() {
    static std::atomic<GRXOffsetPathProc> kept{nullptr};  // every writer stores the same address
    GRXOffsetPathProc proc = kept.load(std::memory_order_relaxed);
    if (proc != nullptr) return proc;
    proc =
        reinterpret_cast<GRXOffsetPathProc>(LookUp("GRXOffsetPathInterface", {"GetOffsetPath", "GRXOffsetPathGetOffsetPathV4"}));
    if (proc == nullptr) ThrowMissingProcedure();
    kept.store(proc, std::memory_order_relaxed);
    return proc;
}

NUBNewNullProgressProc NewNullProgress() { return g_progress.Get<NUBNewNullProgressProc>(kNewNullProgress); }
NUBProgressReleaseProc ProgressRelease() { return g_progress.Get<NUBProgressReleaseProc>(kProgressRelease); }

TAVNewFillProc NewFill() {
    BindPainterInterface();
    return g_painter.Get<TAVNewFillProc>(kNewFill);
}

NUBContainerCountProc ContainerRelease() { return g_container.Get<NUBContainerCountProc>(kContainerRelease); }

PIVGetInfoProc PainterGetInfo(NUBContainer* painter) {
    if (painter == nullptr) throw CNUBError("invalid container");
    const char* signature = g_container.Get<NUBContainerGetSignatureProc>(kContainerGetSignature)(painter);
    if (signature == nullptr) throw CNUBError("couldn't get signature");
    const std::scoped_lock lock(g_object_lock);
    ObjectTable& table = FindOrAddTable(signature);
    Bind(table);
    if (table.get_info == nullptr) ThrowMissingProcedure();
    return table.get_info;
}

}  // namespace NUB_T_MT
