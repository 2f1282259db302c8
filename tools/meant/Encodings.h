/// What a machine knows of the encodings of 8-bit text: on a desktop uchardet and iconv (SystemEncodings.h), in a
/// browser what that has.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace meant {

struct Encodings {
    /// Appends the bytes as UTF-8; U+FFFD for each that is no character. Pieces of a text come in their order, cut
    /// between characters.
    using Decode = std::function<void(std::string_view bytes, std::string* utf8)>;

    /// The name of the encoding that the bytes look like; empty when nothing can be told.
    std::function<std::string(std::string_view bytes)> guess;

    /// Null for a name that is not known.
    std::function<Decode(const std::string& name)> open;
};

}  // namespace meant
