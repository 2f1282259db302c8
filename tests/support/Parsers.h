/// Parsers as tests want them: with data in memory, scanned, parsed from a file, rigged to fail, with a worker in hand.
#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/SubtitleParser.h"
#include "subtitle/system/Worker.h"
#include "tests/support/Interpose.h"
#include "tests/support/Texts.h"

namespace test {

/// A path as the parser's constructor takes it: `char*` or `U8*`.
template <class Parser>
auto pathFor(const char* path) {
    if constexpr (std::is_constructible_v<Parser, char*>) {
        return const_cast<char*>(path);
    } else {
        return reinterpret_cast<U8*>(const_cast<char*>(path));
    }
}

/// Puts `data` where `BeginParse` would have put a file of that content.
inline void load(SubtitleParser& parser, std::string_view data) {
    ASSERT_EQ(TRUE, parser.Init(data.size()));
    if (!data.empty()) memcpy(parser.m_pu8RawBuffer, data.data(), data.size());
}

/// A parser with `content` in its raw buffer, as text of a code type; no file and no thread.
template <class Parser>
struct Loaded {
    explicit Loaded(std::string_view content, EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType = kNative)
        : parser(-1, 0, 0) {
        load(parser, content);
        parser.m_eCodeType = codeType;
    }

    Parser parser;
};

/// A parser with entries put by hand at the positions given.
template <class Parser>
struct PutByHand : Parser {
    PutByHand(std::string_view data, const std::vector<S64>& positions,
              EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type = kNative)
        : Parser(-1, 0, 0) {
        load(*this, data);
        this->m_eCodeType = type;
        for (const S64 pos : positions) this->AddTag(0, 0, pos, kWhole);
    }
};

/// A parser that has scanned `data` on this thread, without file and worker.
template <class Parser>
struct Scanned : Parser {
    explicit Scanned(std::string_view data) : Parser(-1, 0, 0) {
        load(*this, data);
        this->ParserThread();
    }
};

/// A parser that has parsed a file of its own.
template <class Parser>
struct Parsed {
    /// `rate` is set before the parse, 0 leaves it alone.
    explicit Parsed(std::string_view content, U32 rate = 0)
        : file(content, ".sub"), parser(pathFor<Parser>(file.path())) {
        parser.SetFrameRate(rate);
        result = parser.BeginParse();
    }

    TempFile file;
    Parser parser;
    BOOL result;
};

/// A parser whose steps can be made to go wrong.
template <class Parser>
struct Rigged : Parser {
    using Parser::Parser;
    ~Rigged() override { this->Deinit(); }  // waits for the worker while this class's operations still exist

    BOOL Init(U64 size) override {
        if (initAnswer != TRUE) return initAnswer;
        const BOOL result = Parser::Init(size + missing);
        if (loseTable) lose(this->m_pTagBuffer);
        if (loseWorkBuffer) lose(this->m_pu8SubtitleBuffer);
        return result;
    }
    BOOL AddTag(const U32 start, const U32 end, const S64 pos, const EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE type) override {
        if (tagsThatFit == 0) return FALSE;
        --tagsThatFit;
        return Parser::AddTag(start, end, pos, type);
    }
    U32 GetSystemTime() override {
        ++looks;
        return Parser::GetSystemTime();
    }

    BOOL initAnswer = TRUE;
    U64 missing = 0;  ///< bytes that the file is thought to have but has not
    bool loseTable = false;
    bool loseWorkBuffer = false;
    U32 tagsThatFit = 0xFFFFFFFF;
    size_t looks = 0;  ///< at the clock

private:
    template <class T>
    static void lose(T*& buffer) {
        free(buffer);
        buffer = nullptr;
    }
};

/// Waits, without sleeping, until the worker has raised its flag.
inline void awaitFlag(const SubtitleParser& parser) {
    while (__atomic_load_n(&parser.bParseFinish, __ATOMIC_ACQUIRE) == FALSE) sched_yield();
}

/// Opens `parser` with its worker held back until the first pause of the wait, so that the order of events is fixed.
inline BOOL beginSlowly(SubtitleParser& parser, VirtualClock& clock) {
    ThreadGate gate;
    clock.atSleep(1, [&] {
        gate.open();
        while (__atomic_load_n(&parser.mWorkerState, __ATOMIC_ACQUIRE) != vxsubtitle::kWorkerEnded) sched_yield();
    });
    return parser.BeginParse();
}

}  // namespace test
