#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Ends the program, with a finding under a fuzzer, when something that always holds does not.
inline void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "fuzz: does not hold: %s\n", what);
    std::abort();
}

}  // namespace fuzz

/// The one entry of every target, for any bytes. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
