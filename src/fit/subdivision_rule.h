#pragma once

#include <cstdint>

#include "base/owner.h"
#include "fit/pool.h"
#include "fit/ranking.h"
#include "fit/tangent_estimator.h"

class CF1CurveView;

enum CFSubdivKind : std::int32_t { kSubdivMidpoint = 0, kSubdivCornerRanking = 1 };

/// Chooses the point at which a span that one curve cannot follow is cut.
class CFSubdivRule {
 public:
    virtual ~CFSubdivRule() = default;
    /// The rules of both halves of a span cut at the chain's point `k`.
    virtual void SplitRule(std::int32_t k, ts::auto_ptr<CFSubdivRule>& first, ts::auto_ptr<CFSubdivRule>& second) const = 0;
    /// The chain's point at which to cut `view`. `smooth`: both halves will follow the tangent that `estimator` gives there.
    /// @throws int  kBrokenInvariant when the view has no inner point
    virtual std::int32_t SplitIndex(const CF1CurveView& view, const CFTangentEstimator& estimator, bool smooth) const = 0;

    std::int32_t Kind() const { return kind_; }

 protected:
    explicit CFSubdivRule(std::int32_t kind) : kind_(kind) {}

 private:
    std::int32_t kind_;
};

/// Cuts in the middle.
class CFMidpointRule : public CFSubdivRule, public CFPooled {
 public:
    CFMidpointRule() : CFSubdivRule(kSubdivMidpoint) {}
    void SplitRule(std::int32_t k, ts::auto_ptr<CFSubdivRule>& first, ts::auto_ptr<CFSubdivRule>& second) const override;
    std::int32_t SplitIndex(const CF1CurveView& view, const CFTangentEstimator& estimator, bool smooth) const override;
};

/// Cuts at the highest corner score inside the span, at the first of several; in the middle when all are 0.
class CFCRRule : public CFSubdivRule, public CFPooled {
 public:
    /// Borrows the chain's ranking.
    explicit CFCRRule(const CFRanking& ranking) : CFSubdivRule(kSubdivCornerRanking), ranking_(&ranking) {}
    void SplitRule(std::int32_t k, ts::auto_ptr<CFSubdivRule>& first, ts::auto_ptr<CFSubdivRule>& second) const override;
    /// @throws int  kBrokenInvariant when the ranking is not that of the view's chain as well
    std::int32_t SplitIndex(const CF1CurveView& view, const CFTangentEstimator& estimator, bool smooth) const override;

    const CFRanking& Ranking() const { return *ranking_; }

 private:
    const CFRanking* ranking_;
    CFMidpointRule midpoint_;
};

/// The rule of two neighbouring spans made one.
/// @throws int  kBrokenInvariant unless both are of the same known kind
ts::auto_ptr<CFSubdivRule> MergeRules(const CFSubdivRule& first, const CFSubdivRule& second);
