#pragma once

#include <bit>
#include <cstdint>
#include <iterator>
#include <limits>
#include <span>

namespace fuzz {

/// Turns the bytes of a fuzzer into numbers, one after another; zeros follow the last byte. The first byte says whether
/// hostile numbers may come up: infinities, NaN, the ends of the ranges. Without them a target knows that its work must succeed.
class ByteReader {
 public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) : bytes_(bytes), hostile_((Byte() & 1) != 0) {}

    bool IsHostile() const { return hostile_; }
    bool AtEnd() const { return bytes_.empty(); }

    std::uint8_t Byte() {
        if (bytes_.empty()) return 0;
        const std::uint8_t byte = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return byte;
    }
    bool Flag() { return (Byte() & 1) != 0; }
    int Between(int low, int high) { return low + Byte() % (high - low + 1); }  // at most 256 values
    template <class T>
    T Bits() {
        T bits = 0;
        for (std::size_t i = 0; i < sizeof(T); ++i) bits = static_cast<T>(bits << 8 | Byte());
        return bits;
    }

    /// Mostly -128 to 128 in steps of a 256th, every other time a whole number.
    double Number() {
        constexpr int kOddest = 245;  // kinds above stand for odd numbers
        const std::uint8_t kind = Byte();
        if (hostile_ && kind > kOddest) return OddNumber(kind);
        const double whole = static_cast<std::int8_t>(Byte());
        return (kind & 1) != 0 ? whole : whole + Byte() / 256.0;
    }
    double Number(double low, double high) {
        const double number = Number();
        return hostile_ && !(-129 < number && number < 129) ? number : low + (number + 128) / 256 * (high - low);
    }
    float Float() { return static_cast<float>(Number()); }

    /// 16.16: mostly `low` to `high` pixels.
    std::int32_t Fixed(double low, double high) {
        constexpr std::int32_t kEnds[] = {std::numeric_limits<std::int32_t>::min(), -1, 1,
                                          std::numeric_limits<std::int32_t>::max()};
        constexpr double kOne = 65536;
        const double number = Number(low, high);
        if (low <= number && number <= high) return static_cast<std::int32_t>(number * kOne);
        return Flag() ? kEnds[Byte() % std::size(kEnds)] : Bits<std::int32_t>();
    }

 private:
    double OddNumber(std::uint8_t kind) {
        using Limits = std::numeric_limits<double>;
        constexpr double kFloatMax = 3.4028234663852886e38, kFloatDenormal = 1.401298464324817e-45;
        constexpr double kOdd[] = {Limits::infinity(),
                                   -Limits::infinity(),
                                   Limits::quiet_NaN(),
                                   Limits::max(),
                                   kFloatMax,
                                   -kFloatMax,
                                   kFloatDenormal,
                                   -0.0,
                                   1e-20,
                                   32767,
                                   32768,
                                   -32768,
                                   65536,
                                   16777217,
                                   1e9,
                                   2147483648.0,
                                   -2147483648.0,
                                   1e19};
        if (kind % 3 == 0) return static_cast<double>(std::bit_cast<float>(Bits<std::uint32_t>()));
        if (kind % 3 == 1) return std::bit_cast<double>(Bits<std::uint64_t>());
        return kOdd[Byte() % std::size(kOdd)];
    }

    std::span<const std::uint8_t> bytes_;
    bool hostile_;
};

}  // namespace fuzz
