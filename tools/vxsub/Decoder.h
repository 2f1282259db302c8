/// From the units that the library answers to text that people read.
#pragma once

#include <string>
#include <vector>

#include "Native.h"

namespace vxsub {

/// An entry's text as the library gave it: bytes or UTF-16 units.
struct Units {
    std::vector<android::U16> values;
    bool wide = false;
};

/// What 8-bit text without a mark was taken for.
enum class Reading {
    Stated,   ///< the file's mark or the library said what it is
    Chosen,   ///< --native said so
    Ascii,    ///< it is the same in every encoding
    Utf8,     ///< guessed: it is well-formed
    Western,  ///< guessed: it is not UTF-8
};

/// Decodes the entries of one file.
class Decoder {
public:
    /// `native` is what the user chose for 8-bit text, null for a guess. It also overrules what the library judged
    /// from a file's texts, but never a byte-order mark.
    Decoder(android::SubtitleParser& parser, android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType,
            const NativeCharset* native);

    /// Code points, each of them a character or `kInvalid`.
    std::u32string decode(const Units& units) const;

    /// How `decode` takes them.
    Reading readingOf(const Units& units) const;

    /// What the user chose, where that counts; null otherwise.
    const NativeCharset* chosen() const { return mIsChosen ? mStated : nullptr; }

    /// The encoding that a guess falls back to.
    static const NativeCharset& western();

private:
    const NativeCharset* charsetOf(const std::string& bytes) const;

    android::SubtitleParser& mParser;
    const NativeCharset* mStated;
    bool mIsChosen;
};

}  // namespace vxsub
