/// Bad input made from good samples: cut at every byte, with zeros, with bytes lost or in disorder, endless; and that
/// everything in it can be read.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Forward.h"
#include "tests/support/Interpose.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"

namespace test {

/// How often a costly test repeats: `rounds` on a desk, less under emulation and sanitizers, or the part of it in
/// percent that the environment's VXSUBTITLE_TEST_PERCENT says.
inline unsigned scaled(unsigned rounds) {
#if defined(TEST_SANITIZED) || defined(__arm__)
    unsigned percent = 10;
#else
    unsigned percent = 100;
#endif
    if (const char* const asked = getenv("VXSUBTITLE_TEST_PERCENT")) percent = static_cast<unsigned>(atoi(asked));
    const unsigned count = static_cast<unsigned>(static_cast<unsigned long long>(rounds) * percent / 100);
    return count > 0 ? count : 1;
}

/// The same content as the player may meet it: without a mark, as UTF-8, as UTF-16 in both orders.
inline std::vector<std::string> inEveryEncoding(std::string_view content) {
    const std::string plain(content);
    return {plain, kUtf8Mark + plain, utf16le(content), utf16be(content)};
}

/// Reads every entry into buffers of many sizes, each allocated to the byte for the sanitizers. `read` is called with
/// buffer, size and index.
template <class Read>
void readEverything(SubtitleParser& parser, Read read) {
    const U32 width = isWide(parser.m_eCodeType) ? 2 : 1;
    for (U32 index = 0; index <= parser.GetTagNum(); ++index) {
        for (const U32 size : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 15u, 16u, 40u, 8191u, 8192u, 20000u}) {
            const std::unique_ptr<U8[]> buffer(new U8[size]);
            EXPECT_LE(read(buffer.get(), size, index) * width, size) << size;
        }
    }
}
inline void readEverything(SubtitleParser& parser) {
    readEverything(parser, [&](U8* buffer, U32 size, U32 index) { return parser.GetData(0, buffer, size, index); });
}

/// Calls `use` with every beginning of `whole`, from nothing to all of it.
template <class Use>
void forEachCut(const std::string& whole, Use use) {
    for (size_t length = 0; length <= whole.size(); ++length) use(whole.substr(0, length));
}

/// Calls `use` with `whole` and a 0 in each place.
template <class Use>
void forEachZero(const std::string& whole, Use use) {
    for (size_t at = 0; at < whole.size(); ++at) {
        std::string holed = whole;
        holed[at] = 0;
        use(holed);
    }
}

/// Calls `use` with `whole` without each of its bytes.
template <class Use>
void forEachLoss(const std::string& whole, Use use) {
    for (size_t at = 0; at < whole.size(); ++at) {
        std::string shorter = whole;
        shorter.erase(at, 1);
        use(shorter);
    }
}

/// Calls `use` with files in which a few bytes were changed for ones that mean something: a fixed sequence, the same
/// on every machine.
template <class Use>
void forEachDisorder(const std::vector<std::string>& wholes, unsigned rounds, Use use) {
    U32 state = 12345;
    const auto next = [&state](size_t below) {
        state = state * 1664525 + 1013904223;
        return static_cast<size_t>(state >> 8) % below;
    };
    constexpr std::string_view kBytes = "\0\x01\r\n \t0159:,.-><{}[]/aZ\x7F\x80\xA4\xEF\xFE\xFF"sv;
    for (unsigned round = 0; round < rounds; ++round) {
        std::string file = wholes[next(wholes.size())];
        for (size_t changes = 1 + next(12); changes > 0 && !file.empty(); --changes) {
            const size_t at = next(file.size());
            switch (next(3)) {
                case 0:
                    file[at] = kBytes[next(kBytes.size())];
                    break;
                case 1:
                    file.insert(at, 1 + next(4), kBytes[next(kBytes.size())]);
                    break;
                default:
                    file.erase(at, 1 + next(4));
            }
        }
        use(file);
    }
}

/// The phrase over and over, at least `size` bytes of it.
inline std::string runOf(std::string_view phrase, size_t size) {
    std::string run;
    while (run.size() < size) run += phrase;
    return run;
}

/// Scans the file and reads all that came of it.
template <class Parser>
void expectSafe(const std::string& file) {
    Scanned<Parser> parser(file);
    EXPECT_EQ(TRUE, parser.bParseFinish);
    readEverything(parser);
}

/// Whatever is cut off a file, the scan ends and every entry can be read.
template <class Parser>
void expectSafeAtEveryCut(std::string_view sample) {
    for (const std::string& whole : inEveryEncoding(sample)) forEachCut(whole, expectSafe<Parser>);
}

/// A 0 in any place of a file does no harm either.
template <class Parser>
void expectSafeWithZeros(std::string_view sample) {
    for (const std::string& whole : inEveryEncoding(sample)) forEachZero(whole, expectSafe<Parser>);
}

/// Long runs of one byte or one short phrase, behind something that makes it an entry: nothing takes more than one
/// pass. One pass takes milliseconds; another one for each repetition would take far more than is allowed here.
template <class Parser>
void expectLinearTime(std::string_view before, const std::vector<std::string>& phrases) {
    constexpr int kSecondsAllowed = 3;
    for (const std::string& phrase : phrases) {
        SCOPED_TRACE(show(phrase));
        for (const std::string& whole : inEveryEncoding(std::string(before) + runOf(phrase, 600000))) {
            const clock_t began = clock();
            Scanned<Parser> parser(whole);
            EXPECT_EQ(TRUE, parser.bParseFinish);
            U8 buffer[8192];
            for (U32 i = 0; i < parser.GetTagNum() && i < 100; ++i) parser.GetData(0, buffer, sizeof buffer, i);
            EXPECT_LT(clock() - began, kSecondsAllowed * CLOCKS_PER_SEC);
        }
    }
}

}  // namespace test
