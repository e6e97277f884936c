#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace vrltool {

/// Takes a text piece by piece, so that a long one is never held whole.
using TextSink = std::function<void(std::string_view piece)>;

/// Hands `text` over and empties it when it has become long enough.
inline void HandOver(std::string& text, const TextSink& sink) {
    constexpr std::size_t kPiece = 65536;  // bytes; a write to a file costs little beside that many
    if (text.size() < kPiece) return;
    sink(text);
    text.clear();
}

/// The whole text that `write(sink)` writes.
template <class Write>
std::string WholeText(const Write& write) {
    std::string text;
    write([&](std::string_view piece) { text.append(piece); });
    return text;
}

}  // namespace vrltool
