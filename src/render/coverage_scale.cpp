#include "render/coverage_scale.h"

#include <algorithm>

namespace {

constexpr std::int64_t kPacket = 16;             // samples a step
constexpr std::uintptr_t kPacketAlignment = 16;  // bytes

// The arithmetic of one sample, once for each sample type; exact in the type's `Word`, so a packet needs no wider lanes.
template <class P>
struct Scale;

template <>
struct Scale<GW_Pixel8> {
    using Word = std::uint16_t;
    static constexpr std::uint16_t ValueOf(std::uint16_t value) { return value & 0xFF; }
    static constexpr GW_Pixel8 Sample(Word c, Word value) {
        // t = c v <= 65025, so the largest sum is 65025 + 254 + 128 = 65407: 16 bits hold everything.
        const auto t = static_cast<Word>(c * value);
        return static_cast<GW_Pixel8>(static_cast<Word>(t + (static_cast<Word>(t + 128) >> 8) + 128) >> 8);
    }
};

template <>
struct Scale<GW_Pixel16> {
    using Word = std::uint32_t;
    static constexpr std::uint16_t ValueOf(std::uint16_t value) { return value; }
    static constexpr GW_Pixel16 Sample(Word c, Word value) {
        const Word c16 = (c * 0x808080U + 0x81B0U) >> 16;
        return static_cast<GW_Pixel16>((c16 * value + 0x3FFFU) >> 15);
    }
};

// Samples before the first one whose address suits a packet.
template <class P>
std::int64_t SamplesToAlignment(const P* samples) {
    const auto address = reinterpret_cast<std::uintptr_t>(samples);
    return static_cast<std::int64_t>(((kPacketAlignment - address % kPacketAlignment) % kPacketAlignment) / sizeof(P));
}

template <class P>
bool Overlap(const std::uint8_t* coverage, const P* samples, std::int64_t count) {
    const auto source = reinterpret_cast<std::uintptr_t>(coverage);
    const auto target = reinterpret_cast<std::uintptr_t>(samples);
    const auto length = static_cast<std::uintptr_t>(count);
    return source < target + length * sizeof(P) && target < source + length;
}

template <class P>
void ScalePackets(const std::uint8_t* __restrict coverage, std::int64_t packets, std::uint16_t value, P* __restrict samples) {
    using Word = typename Scale<P>::Word;
    for (std::int64_t packet = 0; packet < packets; ++packet, coverage += kPacket, samples += kPacket) {
        for (std::int64_t lane = 0; lane < kPacket; ++lane) samples[lane] = Scale<P>::Sample(Word{coverage[lane]}, Word{value});
    }
}

}  // namespace

template <class P>
P VRLp_ScaledCoverage(std::uint8_t c, std::uint16_t value) {
    return Scale<P>::Sample(c, Scale<P>::ValueOf(value));
}

template <class P>
void VRLp_ScaleCoverage(const std::uint8_t* coverage, std::int64_t count, std::uint16_t value, P* samples) {
    const std::int64_t aligning = SamplesToAlignment(samples);
    std::int64_t done = 0;
    if (count >= aligning + kPacket && !Overlap(coverage, samples, count)) {
        for (; done < aligning; ++done) samples[done] = VRLp_ScaledCoverage<P>(coverage[done], value);
        const std::int64_t packets = (count - done) / kPacket;
        ScalePackets(coverage + done, packets, Scale<P>::ValueOf(value), samples + done);
        done += packets * kPacket;
    }
    for (; done < count; ++done) samples[done] = VRLp_ScaledCoverage<P>(coverage[done], value);
}

template GW_Pixel8 VRLp_ScaledCoverage<GW_Pixel8>(std::uint8_t, std::uint16_t);
template GW_Pixel16 VRLp_ScaledCoverage<GW_Pixel16>(std::uint8_t, std::uint16_t);
template void VRLp_ScaleCoverage<GW_Pixel8>(const std::uint8_t*, std::int64_t, std::uint16_t, GW_Pixel8*);
template void VRLp_ScaleCoverage<GW_Pixel16>(const std::uint8_t*, std::int64_t, std::uint16_t, GW_Pixel16*);
