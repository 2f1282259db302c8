/// A file's text as UTF-8, in lines, and the way back to the bytes that it came from.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/meant/Meant.h"

namespace meant {

class Source {
public:
    /// Decodes the file, whose encoding and line ends it tells. Zeros and byte-order marks are left out of the text.
    Source(std::string_view bytes, const Options& options, const Encodings& encodings);
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    const Encoding& encoding() const { return mEncoding; }
    const LineEnds& lineEnds() const { return mLineEnds; }

    /// The whole text; every line ends with '\n'.
    std::string_view text() const { return mText; }

    /// The lines, without their ends.
    const std::vector<std::string_view>& lines() const { return mLines; }

    /// Where a character of `text()` stands in the file: exact at the start of lines, at '<' and as far as ASCII leads
    /// from there; for UTF-8, 16-bit and 32-bit text everywhere.
    Place placeOf(const char* at) const;

private:
    struct Waymark {
        size_t inText, inFile;
    };

    template <class Units, class Append>
    void split(const Units& in, size_t at, bool cutsAtTags, Append append);
    template <class Units>
    size_t endLines(const Units& in, size_t at);
    template <class Units>
    void readWide(const Units& in, size_t mark);
    void readBytes(std::string_view bytes, size_t mark, const Encodings& encodings);
    void setWaymark(size_t inFile) { mWaymarks.push_back({mText.size(), inFile}); }
    void cutLines();

    Encoding mEncoding;
    LineEnds mLineEnds;
    size_t mWidth = 1;  ///< bytes of a unit
    std::string mText;
    std::vector<std::string_view> mLines;
    std::vector<Waymark> mWaymarks;  ///< ascending
};

}  // namespace meant
