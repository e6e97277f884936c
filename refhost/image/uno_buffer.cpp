#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include "host/image.h"
#include "refhost/services/faults.h"

using refhost::HostCall;
using refhost::InjectedStatus;

namespace {

std::int64_t SampleCount(const GW_UnoBuffer& buffer) { return std::int64_t{buffer.width} * buffer.height; }

template <class P>
void FillAll(GW_UnoBuffer& buffer, int value) {
    std::fill_n(buffer.Row<P>(0), SampleCount(buffer), static_cast<P>(value));
}

template <class P>
void InvertAndFade(GW_UnoBuffer& buffer, std::int32_t opacity) {
    constexpr std::int64_t kMax = SampleTraits<P>::kMax;
    P* samples = buffer.Row<P>(0);
    for (std::int64_t i = 0; i < SampleCount(buffer); ++i) {
        const std::int64_t faded = ((kMax - samples[i]) * opacity + 0x8000) >> 16;
        samples[i] = static_cast<P>(std::clamp<std::int64_t>(faded, 0, kMax));
    }
}

}  // namespace

GW_UnoBuffer::GW_UnoBuffer(std::int32_t w, std::int32_t h, std::int32_t d) : width(w), height(h), depth(d) {
    if (w < 0 || h < 0) throw std::bad_alloc();
    const auto bytes = static_cast<std::size_t>(SampleCount(*this)) * (IsDeep() ? 2 : 1);
    auto samples = std::make_unique<std::uint8_t[]>(bytes);
    data = new void*(samples.get());
    samples.release();
}

GW_UnoBuffer::~GW_UnoBuffer() {
    delete[] static_cast<std::uint8_t*>(*data);
    delete data;
}

int GW_FillUnoBuffer(int value, GW_UnoBuffer* buffer) {
    if (const int status = InjectedStatus(HostCall::kFillBuffer)) return status;
    FillAll<GW_Pixel8>(*buffer, value);
    return 0;
}

int GW_FillDeepUnoBuffer(int value, GW_UnoBuffer* buffer) {
    if (const int status = InjectedStatus(HostCall::kFillBuffer)) return status;
    FillAll<GW_Pixel16>(*buffer, value);
    return 0;
}

int GW_InvertAndFadeUnoBuffer(const GW_ProgressInfo*, std::int32_t opacity, GW_UnoBuffer* buffer) {
    if (const int status = InjectedStatus(HostCall::kInvertAndFade)) return status;
    if (buffer->IsDeep()) {
        InvertAndFade<GW_Pixel16>(*buffer, opacity);
    } else {
        InvertAndFade<GW_Pixel8>(*buffer, opacity);
    }
    return 0;
}

void YQp_Memset16(std::uint16_t value, std::int64_t count, std::uint16_t* destination) { std::fill_n(destination, count, value); }
