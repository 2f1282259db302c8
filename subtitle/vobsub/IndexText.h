/// How a scan of a VobSub index reads its text: as bytes, whatever the encoding, and by its keywords.
#pragma once

#include "subtitle/text/NumberScan.h"

namespace vxsubtitle {

/// Units of 16-bit text narrowed to bytes, with zeros behind them; what exceeds the 256 bytes is dropped.
template <class Enc>
class IndexText {
public:
    static constexpr U32 kMostUnits = 254;  ///< a longer text is not read at all

    IndexText(const TextView<Enc>& in, size_t pos, size_t units) {
        constexpr bool kBig = Enc::lit('\n') != kLf;
        size_t n = 0;
        for (size_t i = 0; i < units; ++i) {
            U8 narrow[2];
            const U32 width = narrowUnit(in.at(pos + i), kBig, narrow);
            for (U32 k = 0; k < width && n < kScratch - 1; ++k) mBytes[n++] = narrow[k];
        }
    }

    U8 at(size_t i) const { return i < kScratch ? mBytes[i] : U8{0}; }

private:
    static constexpr size_t kScratch = 256;
    U8 mBytes[kScratch] = {};
};

/// 8-bit text is read where it lies, across line ends, however many units are asked for.
template <>
class IndexText<Bytes> {
public:
    IndexText(const TextView<Bytes>& in, size_t pos, size_t) : mIn(in), mPos(pos) {}
    U8 at(size_t i) const { return mIn.at(mPos + i); }

private:
    TextView<Bytes> mIn;
    size_t mPos;
};

template <class Text>
bool startsWith(const Text& text, const char* word) {
    size_t i = 0;
    while (word[i] != 0 && text.at(i) == static_cast<U8>(word[i])) ++i;
    return word[i] == 0;
}

enum class IndexKeyword { kTimestamp, kId, kLangIdx, kDelay, kPalette, kSize, kOrg, kCustomColors, kNone };

/// Tried in this order, at the start of a line, letter for letter.
constexpr const char* kIndexKeywords[] = {
    "timestamp:", "id:", "langidx:", "delay:", "palette:", "size:", "org:", "custom colors:"};
constexpr size_t kLongestIndexKeyword = 14;

template <class Text>
IndexKeyword keywordAt(const Text& line) {
    int keyword = 0;
    for (const char* const word : kIndexKeywords) {
        if (startsWith(line, word)) break;
        ++keyword;
    }
    return static_cast<IndexKeyword>(keyword);
}

}  // namespace vxsubtitle
