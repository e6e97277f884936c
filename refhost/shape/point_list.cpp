#include "refhost/shape/point_list.h"

#include <limits>
#include <new>

#include "refhost/services/faults.h"
#include "refhost/services/status.h"

using refhost::HostCall;
using refhost::InjectedStatus;
using refhost::ListOf;
using refhost::PointList;

namespace {

constexpr int kLast = -1;

void Recount(PointList& list) { list.count = static_cast<std::int32_t>(list.items.size()); }

}  // namespace

int WEX_Insert(const WEX_Item* item, int index, WEX_Head** handle) {
    if (const int status = InjectedStatus(HostCall::kListInsert)) return status;
    PointList& list = ListOf(handle);
    if (list.count == std::numeric_limits<std::int32_t>::max()) return refhost::kStatusNoMemory;
    const int at = index == kLast ? list.count : index;
    if (at < 0 || at > list.count) return refhost::kStatusBadIndex;
    try {
        list.items.insert(list.items.begin() + at, *item);
    } catch (const std::bad_alloc&) {
        return refhost::kStatusNoMemory;
    }
    Recount(list);
    return 0;
}

int WEX_Remove(int index, WEX_Head** handle, int, int) {
    if (const int status = InjectedStatus(HostCall::kListRemove)) return status;
    PointList& list = ListOf(handle);
    const int at = index == kLast ? list.count - 1 : index;
    if (at < 0 || at >= list.count) return refhost::kStatusBadIndex;
    list.items.erase(list.items.begin() + at);
    Recount(list);
    return 0;
}

int WEX_GetItem(const WEX_Head* const* handle, int index, WEX_Item* item) {
    if (const int status = InjectedStatus(HostCall::kListGetItem)) return status;
    const PointList& list = ListOf(handle);
    if (index < 0 || index >= list.count) return refhost::kStatusBadIndex;
    *item = list.items[static_cast<std::size_t>(index)];
    return 0;
}

// The address just past the last item may be asked for, as for any array: an empty outline is no error.
int WEX_GetConstAddress(const WEX_Head* const* handle, int index, const WEX_Item** item) {
    if (const int status = InjectedStatus(HostCall::kListGetConstAddress)) return status;
    const PointList& list = ListOf(handle);
    if (index < 0 || index > list.count) return refhost::kStatusBadIndex;
    *item = list.items.data() + index;
    return 0;
}
