// The shape model: a point list is one block of memory, its head followed by the points. A list that grows moves, which is
// why the library holds a pointer to the pointer.

#include <cstdlib>
#include <cstring>
#include <new>

#include "host/shape.h"
#include "statuses.h"

struct DY_ShapeState {
    WEX_Head* list;  // owned
};

namespace {

WEX_Item* ItemsOf(WEX_Head* head) { return reinterpret_cast<WEX_Item*>(head + 1); }
const WEX_Item* ItemsOf(const WEX_Head* head) { return reinterpret_cast<const WEX_Item*>(head + 1); }

std::size_t BytesFor(int count) { return sizeof(WEX_Head) + static_cast<std::size_t>(count) * sizeof(WEX_Item); }

DY_ShapeState* NewState(const WEX_Head& content) {
    void* block = std::malloc(BytesFor(content.count));
    if (block == nullptr) throw std::bad_alloc();
    std::memcpy(block, &content, BytesFor(content.count));
    return new DY_ShapeState{static_cast<WEX_Head*>(block)};
}

}  // namespace

void* YQ_MemTrackedObject::operator new(std::size_t size) { return ::operator new(size); }
void YQ_MemTrackedObject::operator delete(void* block) noexcept { ::operator delete(block); }

DY_Shape::DY_Shape(unsigned char kind, const M_FloatShortRect*) : type(kind), state(NewState({})) {}
DY_Shape::DY_Shape(const DY_Shape& other) : type(other.type), flags(other.flags), state(NewState(*other.state->list)) {}
DY_Shape::~DY_Shape() {
    std::free(state->list);
    delete state;
}
DY_Shape* DY_Shape::Clone() const { return new DY_Shape(*this); }

WEX_Head** DY_Shape::GetPoints() { return &state->list; }
const WEX_Head* const* DY_Shape::GetPoints() const { return &state->list; }

void DY_Shape::Transform(const M_Matrix3& matrix) {
    const auto& m = matrix.m;
    WEX_Item* items = ItemsOf(state->list);
    for (int i = 0; i < state->list->count; ++i) {
        const auto [x, y] = items[i];
        items[i] = {static_cast<float>(x * m[0][0] + y * m[1][0] + m[2][0]),
                    static_cast<float>(x * m[0][1] + y * m[1][1] + m[2][1])};
    }
}

std::int32_t DY_Shape::GetFeatherPtCount(int) const { return 0; }

int DY_ShapeGetBezPoints(const DY_Shape* shape, int index, M_Vector2T<float>* anchor, M_Vector2T<float>* arriving,
                         M_Vector2T<float>* leaving) {
    const WEX_Head* list = shape->state->list;
    if (index < 0 || index >= list->count || index % 3 != 0) return kOutOfRange;
    const WEX_Item* items = ItemsOf(list);
    const bool comes_back = list->count % 3 == 0;
    *anchor = items[index];
    *leaving = index + 1 < list->count ? items[index + 1] : *anchor;
    *arriving = index > 0 ? items[index - 1] : comes_back ? items[list->count - 1] : *anchor;
    return 0;
}

int WEX_Insert(const WEX_Item* item, int index, WEX_Head** list) {
    const WEX_Item added = *item;  // it may lie in the block that moves
    const int count = (*list)->count;
    const int at = index == -1 ? count : index;
    if (at < 0 || at > count) return kOutOfRange;
    void* grown = std::realloc(*list, BytesFor(count + 1));
    if (grown == nullptr) return kNoMemory;
    *list = static_cast<WEX_Head*>(grown);
    WEX_Item* items = ItemsOf(*list);
    std::memmove(items + at + 1, items + at, static_cast<std::size_t>(count - at) * sizeof *items);
    items[at] = added;
    (*list)->count = count + 1;
    return 0;
}

int WEX_GetConstAddress(const WEX_Head* const* list, int index, const WEX_Item** item) {
    if (index < 0 || index > (*list)->count) return kOutOfRange;  // one past the end will do: an outline may be empty
    *item = ItemsOf(*list) + index;
    return 0;
}
