#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// An edge to merge across, and the squared distance of the colours on its sides (0 or more).
struct RPCandidate {
    std::int32_t edge;
    float distance;
};

/// One candidate, or none, for every group: a heap that knows where each group's candidate is.
class RPCandidateQueue {
 public:
    explicit RPCandidateQueue(std::size_t groups);

    bool IsEmpty() const { return heap_.empty(); }
    /// The edge of the smallest distance; among equal ones the smallest edge number.
    std::int32_t FirstEdge() const { return static_cast<std::int32_t>(heap_.front().key & 0xFFFFFFFFU); }
    /// Puts a group's candidate in place of the one that it had.
    void Set(std::int32_t group, const RPCandidate& candidate);
    /// Takes out the group's candidate if there is one.
    void Remove(std::int32_t group);

 private:
    struct Entry {
        std::uint64_t key;  // the bits of the distance, which keep its order, then the edge number
        std::int32_t group;
    };

    void Move(std::uint32_t place, Entry entry);  // to `place` or wherever its key belongs from there
    void Put(std::uint32_t place, const Entry& entry);

    std::vector<Entry> heap_;
    std::vector<std::uint32_t> places_;  // of the groups in the heap
};
