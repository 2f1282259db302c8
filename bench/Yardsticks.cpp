// What a scan can be expected to cost: finding the line ends alone, and what a programmer would write for well-formed
// SubRip files without another thought.
#include <stdlib.h>
#include <string.h>

#include "bench/Films.h"
#include "bench/Formats.h"
#include "bench/Table.h"

namespace bench {

namespace {

/// The parser's own record and its way of growing; not cleared.
class Tags {
public:
    Tags() = default;
    ~Tags() { free(mTags); }
    Tags(const Tags&) = delete;
    Tags& operator=(const Tags&) = delete;

    void add(U32 start, U32 end, S64 pos) {
        if (mCount == mCapacity) {
            mCapacity += 8192;
            void* const grown = realloc(mTags, mCapacity * sizeof *mTags);
            if (grown == nullptr) abort();
            mTags = static_cast<ST_MEDIA_SUBTITLE_PARSER_TAG*>(grown);
        }
        mTags[mCount++] = {start, end, pos, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE};
    }
    size_t count() const { return mCount; }
    const ST_MEDIA_SUBTITLE_PARSER_TAG& operator[](size_t i) const { return mTags[i]; }

private:
    ST_MEDIA_SUBTITLE_PARSER_TAG* mTags = nullptr;
    size_t mCount = 0;
    size_t mCapacity = 0;
};

/// A number and the character behind it.
const char* number(const char* p, char behind, U32* value) {
    if (*p < '0' || *p > '9') return nullptr;
    for (*value = 0; *p >= '0' && *p <= '9'; ++p) *value = *value * 10 + static_cast<U32>(*p - '0');
    return *p == behind ? p + 1 : nullptr;
}

const char* time(const char* p, char behind, U32* ms) {
    U32 h, m, s, f;
    if ((p = number(p, ':', &h)) == nullptr || (p = number(p, ':', &m)) == nullptr) return nullptr;
    if ((p = number(p, ',', &s)) == nullptr || (p = number(p, behind, &f)) == nullptr) return nullptr;
    *ms = (h * 3600 + m * 60 + s) * 1000 + f;
    return p;
}

/// One pass over 0-terminated text, line by line.
void scanByHand(const char* text, Tags* tags) {
    for (const char* p = text; *p != 0;) {
        U32 start, end;
        const char* q = time(p, ' ', &start);
        if (q != nullptr && strncmp(q, "--> ", 4) == 0 && (q = time(q + 4, '\r', &end)) != nullptr && *q == '\n') {
            p = q + 1;
            tags->add(start, end, p - text);
        }
        while (*p != 0 && *p != '\n') ++p;
        if (*p == '\n') ++p;
    }
}

void memchrLines(benchmark::State& state) {
    const std::string data = srtFilm(kLargeFile);
    for (auto _ : state) {
        size_t lines = 0;
        const char* const end = data.data() + data.size();
        for (const char* p = data.data(); p != end; ++lines) {
            const void* const found = memchr(p, '\n', static_cast<size_t>(end - p));
            p = found == nullptr ? end : static_cast<const char*>(found) + 1;
        }
        benchmark::DoNotOptimize(lines);
    }
    reportRate(state, "MB/s", static_cast<double>(data.size()) / 1e6);
}

bool sameTags(const Tags& tags, const SubtitleParser& parser) {
    if (tags.count() != parser.m_u32TagNum) return false;
    for (size_t i = 0; i < tags.count(); ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& a = tags[i];
        const ST_MEDIA_SUBTITLE_PARSER_TAG& b = parser.m_pTagBuffer[i];
        if (a.u32TimeStart != b.u32TimeStart || a.u32TimeEnd != b.u32TimeEnd || a.s64Pos != b.s64Pos) return false;
    }
    return true;
}

void handWritten(benchmark::State& state) {
    const std::string data = srtFilm(kLargeFile);
    const std::unique_ptr<SubtitleParser> parser = loadAndScan(formats.front(), data);
    bool same = true;
    for (auto _ : state) {
        Tags tags;
        scanByHand(data.c_str(), &tags);
        state.PauseTiming();
        same = same && sameTags(tags, *parser);
        state.ResumeTiming();
    }
    if (!same) state.SkipWithError("the tags differ from the parser's");
    reportRate(state, "MB/s", static_cast<double>(data.size()) / 1e6);
}

}  // namespace

void registerYardsticks() {
    add(kScanGroup, "yardstick: memchr from line end to line end", memchrLines)->Repetitions(5);
    add(kScanGroup, "yardstick: SRT by hand, the same tags", handWritten)->Repetitions(5);
}

}  // namespace bench
