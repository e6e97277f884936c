#include "refhost/engine/engine_memory.h"

#include <atomic>
#include <cstdlib>

#include "refhost/services/faults.h"

namespace refhost {
namespace {

std::atomic<int> g_live{0};

}  // namespace

void* ReallocEngineBlock(void* block, std::size_t bytes) {
    if (AllocationFails()) return nullptr;
    void* grown = std::realloc(block, bytes);
    if (grown != nullptr && block == nullptr) ++g_live;
    return grown;
}

void FreeEngineBlock(void* block) {
    std::free(block);
    if (block != nullptr) --g_live;
}

int LiveEngineBlocks() { return g_live; }

}  // namespace refhost
