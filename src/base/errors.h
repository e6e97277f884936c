#pragma once

#include <exception>

#include "base/export.h"

/// A size that does not fit while path or table storage grows.
class VRL_SHARED_TYPE QELException : public std::exception {
 public:
    /// `text` is a static, zero-terminated text; it is borrowed and never freed.
    explicit QELException(const char* text) noexcept : message(text) {}
    ~QELException() override = default;
    const char* what() const noexcept override { return message; }

    const char* message;
};

/// The text of a `QELException` raised by growing storage.
inline constexpr const char* kMathOverflow = "Math overflow exception";

/// The library's own integer code for a violated precondition or a broken internal invariant.
inline constexpr int kBrokenInvariant = 1;

/// The library's own integer code for a missing object, or for a check that failed and was reported. Host statuses travel
/// beside it as plain integers too.
inline constexpr int kFailedCheck = 3;

/// Throws a non-zero host status unchanged. The host has reported it already.
inline void ThrowIfFailed(int status) {
    if (status != 0) throw status;
}

/// The library's code for an art mode or a colour model that it does not serve; thrown as this enumeration.
enum VRLp_KindError { kUnsupportedKind = 20 };
