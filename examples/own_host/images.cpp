// Coverage buffers.

#include <algorithm>
#include <new>

#include "host/image.h"

namespace {

std::int64_t SamplesOf(const GW_UnoBuffer& buffer) { return std::int64_t{buffer.width} * buffer.height; }

template <class P>
int Fill(int value, GW_UnoBuffer& buffer) {
    std::fill_n(buffer.Row<P>(0), SamplesOf(buffer), static_cast<P>(value));
    return 0;
}

template <class P>
int InvertAndFade(std::int64_t opacity, GW_UnoBuffer& buffer) {
    std::transform(buffer.Row<P>(0), buffer.Row<P>(0) + SamplesOf(buffer), buffer.Row<P>(0),
                   [&](P sample) { return static_cast<P>(((SampleTraits<P>::kMax - sample) * opacity + 0x8000) >> 16); });
    return 0;
}

}  // namespace

// The samples and the pointer to them, which the handle points to, are one block each.
GW_UnoBuffer::GW_UnoBuffer(std::int32_t w, std::int32_t h, std::int32_t d) : width(w), height(h), depth(d) {
    data = new void*(nullptr);
    const auto bytes = static_cast<std::size_t>(SamplesOf(*this)) * (IsDeep() ? 2 : 1);
    *data = ::operator new(bytes, std::nothrow);
    if (*data != nullptr) return;
    delete data;
    throw std::bad_alloc();
}
GW_UnoBuffer::~GW_UnoBuffer() {
    ::operator delete(*data);
    delete data;
}

int GW_FillUnoBuffer(int value, GW_UnoBuffer* buffer) { return Fill<GW_Pixel8>(value, *buffer); }
int GW_FillDeepUnoBuffer(int value, GW_UnoBuffer* buffer) { return Fill<GW_Pixel16>(value, *buffer); }
void YQp_Memset16(std::uint16_t value, std::int64_t count, std::uint16_t* destination) { std::fill_n(destination, count, value); }

int GW_InvertAndFadeUnoBuffer(const GW_ProgressInfo*, std::int32_t opacity, GW_UnoBuffer* buffer) {
    return buffer->IsDeep() ? InvertAndFade<GW_Pixel16>(opacity, *buffer) : InvertAndFade<GW_Pixel8>(opacity, *buffer);
}
