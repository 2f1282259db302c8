/// From the units that the library answers to text that people read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Native.h"

namespace vxsub {

/// An entry's text as the library gave it: bytes or UTF-16 units.
struct Units {
    std::vector<android::U16> values;
    bool wide = false;
};

/// Why texts are read in the encoding that they are read in. It is one for the whole file.
enum class Reading {
    Stated,   ///< the file's mark or the library said what it is
    Chosen,   ///< --native said so
    Ascii,    ///< it is the same in every encoding
    Content,  ///< it can be nothing else: well-formed UTF-8
    Guessed,  ///< by its letters
    Assumed,  ///< nothing tells
};

/// Decodes the entries of one file.
class Decoder {
public:
    /// `native` is what the user chose for 8-bit text, null for a guess from the whole file, which lies in `file`. It
    /// also overrules what the library judged from a file's texts, but never a byte-order mark.
    Decoder(android::SubtitleParser& parser, android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType,
            const CharsetRef& native, std::string_view file);

    /// Code points, each of them a character or `kInvalid`.
    std::u32string decode(const Units& units) const;

    Reading reading() const { return mReading; }

    /// That of 8-bit texts.
    const NativeCharset& charset() const { return *mCharset; }

private:
    android::SubtitleParser& mParser;
    CharsetRef mCharset;
    Reading mReading = Reading::Stated;
};

}  // namespace vxsub
