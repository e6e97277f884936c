#pragma once

#include <cstddef>

namespace refhost {

/// The engine's memory interface: null `block` allocates; a null result means there is no memory and `block` stays.
void* ReallocEngineBlock(void* block, std::size_t bytes);
void FreeEngineBlock(void* block);

/// Blocks alive in the process.
int LiveEngineBlocks();

}  // namespace refhost
