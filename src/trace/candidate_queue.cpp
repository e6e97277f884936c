#include "trace/candidate_queue.h"

#include <bit>
#include <cstddef>
#include <limits>

namespace {

constexpr std::uint32_t kAbsent = std::numeric_limits<std::uint32_t>::max();

std::uint32_t Parent(std::uint32_t place) { return (place - 1) / 2; }

}  // namespace

RPCandidateQueue::RPCandidateQueue(std::size_t groups) : places_(groups, kAbsent) {}

void RPCandidateQueue::Set(std::int32_t group, const RPCandidate& candidate) {
    const std::uint64_t distance = std::bit_cast<std::uint32_t>(candidate.distance);
    const Entry entry = {distance << 32U | static_cast<std::uint32_t>(candidate.edge), group};
    std::uint32_t place = places_[static_cast<std::size_t>(group)];
    if (place == kAbsent) {
        place = static_cast<std::uint32_t>(heap_.size());
        heap_.push_back(entry);
    }
    Move(place, entry);
}

void RPCandidateQueue::Remove(std::int32_t group) {
    const std::uint32_t place = places_[static_cast<std::size_t>(group)];
    if (place == kAbsent) return;
    places_[static_cast<std::size_t>(group)] = kAbsent;
    const Entry last = heap_.back();
    heap_.pop_back();
    if (place < heap_.size()) Move(place, last);
}

void RPCandidateQueue::Move(std::uint32_t place, Entry entry) {
    while (place > 0 && entry.key < heap_[Parent(place)].key) {
        Put(place, heap_[Parent(place)]);
        place = Parent(place);
    }
    for (;;) {
        std::uint32_t child = 2 * place + 1;
        if (child + 1 < heap_.size() && heap_[child + 1].key < heap_[child].key) ++child;
        if (child >= heap_.size() || heap_[child].key >= entry.key) break;
        Put(place, heap_[child]);
        place = child;
    }
    Put(place, entry);
}

void RPCandidateQueue::Put(std::uint32_t place, const Entry& entry) {
    heap_[place] = entry;
    places_[static_cast<std::size_t>(entry.group)] = place;
}
