#pragma once

#include <cstdint>

#include "fit/segment.h"

/// Which pixel centre every step of a closed outline passes, and at which step each centre was first met. Step `k` leads from
/// point `k` of the outline to the next one. Neighbouring steps round one pixel share its centre.
class CFSegmentMapping {
 public:
    /// @throws int  kBrokenInvariant unless `outline` is a closed chain of unit steps
    explicit CFSegmentMapping(const CFSegment& outline);

    std::int32_t SourceCount() const { return static_cast<std::int32_t>(centres_.size()); }
    std::int32_t CentreCount() const { return static_cast<std::int32_t>(creators_.size()); }
    /// The centre beside step `source`.
    std::int32_t Centre(std::int32_t source) const { return centres_[static_cast<std::size_t>(source)]; }
    /// The step at which `centre` was first met. For centre 0 that may be one of the last steps of the outline, when they
    /// run round the same pixel as its first step.
    std::int32_t Creator(std::int32_t centre) const { return creators_[static_cast<std::size_t>(centre)]; }

 private:
    void MergeLastIntoFirst();

    CFPoolVector<std::int32_t> centres_;   // by step
    CFPoolVector<std::int32_t> creators_;  // by centre
};

/// The chain of the pixel centres to the right of a closed outline, each pixel once while the outline runs round it.
/// Borrows the outline.
class CFMappedSegment : public CFSegment {
 public:
    /// @throws int  kBrokenInvariant unless `outline` is a closed chain of unit steps
    explicit CFMappedSegment(const CFSegment& outline);

    const CFSegment& Source() const { return *source_; }
    const CFSegmentMapping& Mapping() const { return mapping_; }

 private:
    CFMappedSegment(const CFSegment& outline, CFSegmentMapping mapping);

    const CFSegment* source_;
    CFSegmentMapping mapping_;
};
