#pragma once

#include <cstdint>

#include "base/export.h"
#include "host/geometry_records.h"
#include "host/progress.h"

// The host's images and pixel routines. Status results: 0 is success.

using GW_Pixel8 = std::uint8_t;    // 0 to 255
using GW_Pixel16 = std::uint16_t;  // 0 to 32768

/// What depends on the sample type: `kMax` is the level of full coverage.
template <class P>
struct SampleTraits;
/// 8-bit samples.
template <>
struct SampleTraits<GW_Pixel8> {
    static constexpr std::uint32_t kMax = 255;
};
/// 16-bit samples.
template <>
struct SampleTraits<GW_Pixel16> {
    static constexpr std::uint32_t kMax = 32768;
};

inline constexpr std::int32_t kDeepDepth = 16;  // the depth that means 16-bit samples; any other is treated as 8-bit

/// Single-channel coverage buffer. Rows are packed: a row has width * depth / 8 bytes.
class VRL_HOST_API GW_UnoBuffer {
 public:
    /// @throws std::bad_alloc
    GW_UnoBuffer(std::int32_t width, std::int32_t height, std::int32_t depth);
    GW_UnoBuffer(const GW_UnoBuffer&) = delete;
    GW_UnoBuffer& operator=(const GW_UnoBuffer&) = delete;
    ~GW_UnoBuffer();

    bool IsDeep() const { return depth == kDeepDepth; }
    template <class P>
    P* Row(std::int32_t y) {
        return static_cast<P*>(*data) + static_cast<std::int64_t>(y) * width;
    }
    template <class P>
    const P* Row(std::int32_t y) const {
        return static_cast<const P*>(*data) + static_cast<std::int64_t>(y) * width;
    }

    std::int32_t width, height;
    void** data;  // handle: pointer to the pointer to the first sample
    std::int32_t depth;
};

VRL_HOST_API int GW_FillUnoBuffer(int value, GW_UnoBuffer* buffer);      // 8-bit buffers
VRL_HOST_API int GW_FillDeepUnoBuffer(int value, GW_UnoBuffer* buffer);  // 16-bit buffers

/// Every sample s becomes (maximum - s) * `opacity`, rounded to nearest; `opacity` is 16.16. `progress` may be null.
VRL_HOST_API int GW_InvertAndFadeUnoBuffer(const GW_ProgressInfo* progress, std::int32_t opacity, GW_UnoBuffer* buffer);

/// Sets `count` 16-bit samples from `destination` on to `value`.
VRL_HOST_API void YQp_Memset16(std::uint16_t value, std::int64_t count, std::uint16_t* destination);

/// Feathers `line` in place by `radius` (16.16 pixels). Both lines hold the same number of samples, at least `length`;
/// `lo` and `hi` bound the part of the line that holds coverage and may lie one sample outside it.
using GW_FeatherLineProc = int (*)(unsigned char quality, std::int32_t length, std::int32_t lo, std::int32_t hi,
                                   std::int32_t radius, void* scratch, void* line);

inline constexpr int kOverFeatherLine8 = 54;  // entries of the table below
inline constexpr int kOverFeatherLine16 = 92;
inline constexpr int kOverFuncCount = 93;

/// The host's table of pixel routines, each entry pointer-sized.
extern "C" VRL_HOST_API void* GWp_G_OverFuncs[kOverFuncCount];
