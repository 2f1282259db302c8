/// What the tests of the text formats do alike: scan in memory, open a file as a player does with the worker under
/// control, let steps go wrong, and cut samples short.
#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <stdlib.h>
#include <time.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/ParserTools.h"
#include "tests/support/Interpose.h"

namespace test {

/// A parser that has scanned `data` on this thread, without file and worker.
template <class Parser>
struct Scanned : Parser {
    explicit Scanned(std::string_view data) : Parser(-1, 0, 0) {
        load(*this, data);
        this->ParserThread();
    }
};

/// A parser whose steps can be made to go wrong.
template <class Parser>
struct Rigged : Parser {
    using Parser::Parser;
    ~Rigged() override { this->Deinit(); }  // waits for the worker while this class's operations still exist

    BOOL Init(U64 size) override {
        if (initAnswer != TRUE) return initAnswer;
        const BOOL result = Parser::Init(size + missing);
        if (loseTable) {
            free(this->m_pTagBuffer);
            this->m_pTagBuffer = nullptr;
        }
        return result;
    }
    BOOL AddTag(const U32 start, const U32 end, const S64 pos, const EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE type) override {
        if (tagsThatFit == 0) return FALSE;
        --tagsThatFit;
        return Parser::AddTag(start, end, pos, type);
    }

    BOOL initAnswer = TRUE;
    U64 missing = 0;  ///< bytes that the file is thought to have but has not
    bool loseTable = false;
    U32 tagsThatFit = 0xFFFFFFFF;
};

/// The messages under `tag`, all of which must have debug priority.
inline std::vector<std::string> messages(const LogCapture& log, std::string_view tag) {
    std::vector<std::string> texts;
    for (const LogLine& line : log.lines()) {
        if (line.tag != tag) continue;
        EXPECT_EQ(3, line.priority) << line.text;
        texts.push_back(line.text);
    }
    return texts;
}

/// The message that a format logs before it reads the file.
inline std::string loadingMessage(const char* format, const SubtitleParser& parser) {
    char text[256];
    snprintf(text, sizeof text, format, static_cast<long>(parser.m_s64DataTotalSize),
             static_cast<U32>(reinterpret_cast<uintptr_t>(parser.m_pu8RawBuffer)));
    return text;
}

/// `BeginParse` gives up when more than 9999 ms have passed, looking every `periodMs`.
template <class Parser>
void expectTimeLimit(unsigned periodMs, std::string_view file) {
    const TempFile content(file);
    for (const unsigned leap : {0u, 9999 - 2 * periodMs, 9999 - periodMs, 10000 - periodMs}) {
        SCOPED_TRACE(leap);
        VirtualClock clock(0xFFFFFF00);  // the milliseconds wrap around within the wait
        Parser parser(content.fd(), 0, 0);
        ThreadGate gate;
        clock.atSleep(1, [&] { clock.advance(leap); });
        EXPECT_EQ(FALSE, parser.BeginParse());
        const size_t pauses = leap == 0                     ? 10000 / periodMs
                              : leap == 9999 - 2 * periodMs ? 3
                              : leap == 9999 - periodMs     ? 2
                                                            : 1;
        EXPECT_EQ(std::vector<unsigned>(pauses, periodMs * 1000), clock.sleeps());
    }
    for (const size_t pause : {size_t{1}, size_t{2}, size_t{9999 / periodMs}}) {
        SCOPED_TRACE(pause);
        VirtualClock clock;
        Parser parser(content.fd(), 0, 0);
        ThreadGate gate;
        clock.atSleep(pause, [&] {
            gate.open();
            while (__atomic_load_n(&parser.bParseFinish, __ATOMIC_ACQUIRE) == FALSE) sched_yield();
        });
        EXPECT_EQ(TRUE, parser.BeginParse());
        EXPECT_EQ(pause, clock.sleeps().size());
    }
}

/// `GetTrackInfo` fills the format and the code type and nothing else, whatever the track.
inline void expectTrackInfo(SubtitleParser& parser, EN_MEDIA_SUBTITLE_PARSER_TYPE type) {
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info, expected;
    memset(static_cast<void*>(&info), 0x5A, sizeof info);
    memset(static_cast<void*>(&expected), 0x5A, sizeof expected);
    expected.eSubtitleType = type;
    expected.eCodeType = parser.m_eCodeType;
    EXPECT_EQ(TRUE, parser.GetTrackInfo(7, &info));
    EXPECT_EQ(0, memcmp(&info, &expected, sizeof info));
}

/// `GetData` of `parser`, whose entry 0 has text, with arguments that give none.
inline void expectNoText(SubtitleParser& parser) {
    U8 buffer[64] = {'x'};
    EXPECT_EQ(0u, parser.GetData(0, nullptr, sizeof buffer, 0));
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, parser.GetTagNum()));
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0xFFFFFFFF));
    EXPECT_EQ(0u, parser.GetData(0, buffer, 0, 0));
    stSubDecoderInfo info{};
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0, &info));
    EXPECT_EQ('x', buffer[0]);
    const U32 count = parser.GetTagNum();
    parser.Deinit();
    ASSERT_EQ(count, parser.GetTagNum());
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0));
    EXPECT_EQ('x', buffer[0]);
}

/// Reads every entry into buffers of many sizes, each allocated to the byte for the sanitizers.
inline void readEverything(SubtitleParser& parser) {
    const U32 width = isWide(parser.m_eCodeType) ? 2 : 1;
    for (U32 index = 0; index <= parser.GetTagNum(); ++index) {
        for (const U32 size : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 15u, 16u, 40u, 8191u, 8192u, 20000u}) {
            const std::unique_ptr<U8[]> buffer(new U8[size]);
            EXPECT_LE(parser.GetData(0, buffer.get(), size, index) * width, size) << size;
        }
    }
}

/// The same content as the player may meet it: without a mark, as UTF-8, as UTF-16 in both orders.
inline std::vector<std::string> inEveryEncoding(std::string_view content) {
    const std::string plain(content);
    return {plain, "\xEF\xBB\xBF" + plain, utf16le(content), utf16be(content)};
}

/// Whatever is cut off a file, the scan ends and every entry can be read.
template <class Parser>
void expectSafeAtEveryCut(std::string_view sample) {
    for (const std::string& whole : inEveryEncoding(sample)) {
        for (size_t length = 0; length <= whole.size(); ++length) {
            Scanned<Parser> parser(std::string_view(whole).substr(0, length));
            EXPECT_EQ(TRUE, parser.bParseFinish);
            readEverything(parser);
        }
    }
}

/// A 0 in any place of a file does no harm either.
template <class Parser>
void expectSafeWithZeros(std::string_view sample) {
    for (const std::string& whole : inEveryEncoding(sample)) {
        for (size_t at = 0; at < whole.size(); ++at) {
            std::string holed = whole;
            holed[at] = 0;
            Scanned<Parser> parser(holed);
            EXPECT_EQ(TRUE, parser.bParseFinish);
            readEverything(parser);
        }
    }
}

/// Long runs of one byte or one short phrase, behind something that makes it an entry: nothing takes more than one
/// pass. One pass takes milliseconds; another one for each repetition would take far more than is allowed here.
template <class Parser>
void expectLinearTime(std::string_view before, const std::vector<std::string>& phrases) {
    constexpr int kSecondsAllowed = 3;
    for (const std::string& phrase : phrases) {
        SCOPED_TRACE(show(phrase));
        std::string content(before);
        while (content.size() < 600000) content += phrase;
        for (const std::string& whole : inEveryEncoding(content)) {
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
