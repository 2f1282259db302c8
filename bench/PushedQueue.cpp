// The pushed queue with 10, 100 and 1000 entries waiting: pushes and lookups per second.
#include <string>

#include "bench/Table.h"
#include "subtitle/SubtitleParserInternal.h"

namespace bench {

using namespace android;

namespace {

constexpr U32 kStepMs = 10;       // from one start to the next
constexpr U32 kFirstMs = 100000;  // start of the first entry; nothing is late before
const std::string kText = "{\\an8}Two lines of an ordinary length,\nas films have them.";

void push(SubtitleParserInternal& queue, U32 nowMs, U32 startMs) {
    queue.AddSubtitleText(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8, nowMs, kText.data(), static_cast<U32>(kText.size()),
                          startMs, startMs + kStepMs);
}

void fill(SubtitleParserInternal& queue, U32 count) {
    for (U32 i = 0; i < count; ++i) push(queue, 0, kFirstMs + i * kStepMs);
}

/// As a player does it: every push adds the last entry, and the first one expires.
void pushAndExpire(benchmark::State& state, U32 queued) {
    SubtitleParserInternal queue;
    fill(queue, queued);
    U32 start = kFirstMs + queued * kStepMs;
    for (auto _ : state) {
        push(queue, start - queued * kStepMs + 1, start);
        start += kStepMs;  // enough for 400 million pushes
    }
    if (queue.m_vSubtitleInfo.size() > queued + 1) state.SkipWithError("entries did not expire");
    reportRate(state, "per s", 1);
}

/// The dearest place: in front of everything, while the queue grows to twice its size.
void pushInFront(benchmark::State& state, U32 queued) {
    SubtitleParserInternal queue;
    fill(queue, queued);
    for (auto _ : state) {
        push(queue, 0, 1000);
        if (queue.m_vSubtitleInfo.size() < queued * 2) continue;
        state.PauseTiming();
        queue.ClearSubtitleData();
        fill(queue, queued);
        state.ResumeTiming();
    }
    reportRate(state, "per s", 1);
}

/// Which entry covers a time: times from all over the queue.
void getTag(benchmark::State& state, U32 queued) {
    SubtitleParserInternal queue;
    fill(queue, queued);
    U32 i = 0, tag = 0;
    for (auto _ : state) {
        i = (i + 7919) % queued;
        benchmark::DoNotOptimize(tag = queue.GetTag(0, kFirstMs + i * kStepMs + 5));
    }
    if (tag == 0xFFFFFFFF) state.SkipWithError("no entry covers the time");
    reportRate(state, "per s", 1);
}

/// A player's whole question: tag, times, text.
void lookUp(benchmark::State& state, U32 queued) {
    SubtitleParserInternal queue;
    fill(queue, queued);
    U32 i = 0, copied = 0;
    for (auto _ : state) {
        i = (i + 7919) % queued;
        const U32 tag = queue.GetTag(0, kFirstMs + i * kStepMs + 5);
        ST_MEDIA_SUBTITLE_PARSER_TAG info;
        U8 text[256];
        queue.GetTagInfo(0, tag, &info);
        benchmark::DoNotOptimize(copied = queue.GetData(0, text, sizeof text, tag));
    }
    if (copied == 0) state.SkipWithError("no text");
    reportRate(state, "per s", 1);
}

}  // namespace

void registerPushedQueue() {
    constexpr struct {
        const char* name;
        void (*run)(benchmark::State&, U32);
    } kRows[] = {
        {"push, and the first expires", pushAndExpire},
        {"push in front of all", pushInFront},
        {"GetTag", getTag},
        {"GetTag, GetTagInfo, GetData", lookUp},
    };
    for (const auto& [name, run] : kRows) {
        for (const U32 queued : {10U, 100U, 1000U}) {
            add("pushed queue", std::string(name) + ", " + std::to_string(queued) + " entries",
                [body = run, queued](benchmark::State& state) { body(state, queued); });
        }
    }
}

}  // namespace bench
