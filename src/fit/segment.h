#pragma once

#include <algorithm>
#include <cstdint>

#include "base/point.h"
#include "fit/pool.h"

/// How the points of a chain lie. Any kind but the unit steps is parameterised by chord length.
enum CFSpacing : std::int32_t {
    kSpacingGeneral = 0,    // anywhere
    kSpacingUnitSteps = 1,  // one step of the pixel grid apart
    kSpacingBridged = 3,    // anywhere, the gap between the last and the first point filled in before smoothing
    kSpacingDerived = 4,    // anywhere, one for each point of an outline
};

/// What follows the last point of a chain.
enum CFChainType : std::int32_t {
    kChainOpen = 0,
    kChainOpenEither = 1,  // open as well
    kChainClosed = 2,      // the first point
};

/// `index` taken round a loop of `count` points, into 0 to count - 1.
inline std::int32_t RoundLoop(std::int32_t index, std::int32_t count) {
    if (0 <= index && index < count) return index;  // as a rule: a division would cost more than all the rest
    const std::int32_t rest = index % count;
    return rest < 0 ? rest + count : rest;
}

/// A chain of outline points in pixels.
class CFSegment : public CFPooled {
 public:
    /// All points at the origin.
    /// @throws int  kBrokenInvariant when `count` is below 1
    CFSegment(std::int32_t count, std::int32_t spacing, std::int32_t type);
    /// The points that `next()` gives, one each time.
    /// @throws int  kBrokenInvariant when `count` is below 1
    template <class Next>
    CFSegment(std::int32_t count, std::int32_t spacing, std::int32_t type, Next&& next)
        : CFSegment(Unset(), count, spacing, type, 0) {
        SetPoints(0, count, next);
    }
    CFSegment(const CFSegment&) = default;
    CFSegment(CFSegment&&) noexcept = default;
    CFSegment& operator=(const CFSegment&) = default;
    CFSegment& operator=(CFSegment&&) noexcept = default;
    virtual ~CFSegment() = default;

    std::int32_t Count() const { return count_; }
    std::int32_t Kind() const { return kind_; }
    std::int32_t Type() const { return type_; }
    std::int32_t Tag() const { return tag_; }  // 1 for a chain of pixel centres, 0 for all others
    bool IsClosed() const { return type_ == kChainClosed; }

    /// On a closed chain any index is taken round the loop.
    /// @throws std::out_of_range  "invalid vector subscript" outside an open chain
    CFPoint Point(std::int32_t index) const {
        if (IsClosed()) {
            index = RoundLoop(index, count_);
        } else if (index < 0 || index >= count_) {
            RefuseIndex();
        }
        const auto i = static_cast<std::size_t>(index);
        return {xs_[i], ys_[i]};
    }
    /// @throws std::out_of_range  "invalid vector subscript" when `index` is outside 0 to Count() - 1
    void SetPoint(std::int32_t index, CFPoint point) {
        if (index < 0 || index >= count_) RefuseIndex();
        for (auto i = static_cast<std::size_t>(index); i < xs_.size(); i += static_cast<std::size_t>(count_)) {
            xs_[i] = point.x;
            ys_[i] = point.y;
        }
    }

    /// Sets the points from `first` on, `count` of them, to what `next()` gives each time.
    /// @throws std::out_of_range  "invalid vector subscript" when some are outside 0 to Count() - 1
    template <class Next>
    void SetPoints(std::int32_t first, std::int32_t count, Next&& next) {
        if (first < 0 || count < 0 || first > count_ - count) RefuseIndex();
        float* const xs = xs_.data() + first;
        float* const ys = ys_.data() + first;
        for (std::int32_t j = 0; j < count; ++j) {
            const CFPoint point = next();
            xs[j] = point.x;
            ys[j] = point.y;
        }
        if (!IsClosed()) return;
        std::copy_n(xs, count, xs + count_);
        std::copy_n(ys, count, ys + count_);
    }

    /// The coordinates in order. Those of a closed chain follow twice, so that every range of up to Count() + 1 points can
    /// be read straight on from its first point.
    const float* X() const { return xs_.data(); }
    const float* Y() const { return ys_.data(); }

 protected:
    struct Unset {};
    /// Points without values, all of which must be set.
    CFSegment(Unset, std::int32_t count, std::int32_t spacing, std::int32_t type, std::int32_t tag);

 private:
    [[noreturn]] static void RefuseIndex();

    CFPoolVector<float> xs_, ys_;
    std::int32_t count_, kind_, type_, tag_;
};
