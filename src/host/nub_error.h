#pragma once

#include <cstdint>
#include <exception>

#include "base/export.h"
#include "host/engine.h"

namespace NUB_T_MT {

/// A failure of the graphics engine or of its binding. All texts are static or the engine's, kept until the process
/// ends, so the error may outlive the binding.
class VRL_SHARED_TYPE CNUBError : public std::exception {
 public:
    /// A failure found by the library: the component is empty.
    explicit CNUBError(const char* message) noexcept : CNUBError("", 0, message) {}
    /// `component` "NUB" is a procedure missing after start-up.
    CNUBError(const char* component, std::int32_t identifier, const char* message) noexcept
        : component_(component), identifier_(identifier), message_(message) {}
    ~CNUBError() override = default;

    const char* Component() const noexcept { return component_; }
    std::int32_t Identifier() const noexcept { return identifier_; }
    const char* what() const noexcept override { return message_; }

 private:
    const char* component_;
    std::int32_t identifier_;
    const char* message_;
};

/// Raises what an engine procedure returned; does nothing for null.
/// @throws std::bad_alloc  the engine reports exhausted memory
/// @throws CNUBError       any other failure, carrying the engine's component, identifier and text
void ThrowIfFailed(const NUBErrorObject* error);

}  // namespace NUB_T_MT
