// The pushed queue with 10, 100 and 1000 entries waiting: pushes and lookups.
#include <string>

#include "bench/Table.h"
#include "subtitle/SubtitleParserInternal.h"

namespace bench {

using namespace android;

namespace {

constexpr U32 kStepMs = 10;       // from one start to the next
constexpr U32 kFirstMs = 100000;  // start of the first entry; nothing is late before
constexpr U32 kCalls = 100;
const std::string kText = "{\\an8}Two lines of an ordinary length,\nas films have them.";

void push(SubtitleParserInternal& queue, U32 nowMs, U32 startMs) {
    queue.AddSubtitleText(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8, nowMs, kText.data(), static_cast<U32>(kText.size()),
                          startMs, startMs + kStepMs);
}

void fill(SubtitleParserInternal& queue, U32 count) {
    for (U32 i = 0; i < count; ++i) push(queue, 0, kFirstMs + i * kStepMs);
}

/// As a player does it: every push adds the last entry, and the first one expires.
double pushAndExpire(U32 queued) {
    SubtitleParserInternal queue;
    fill(queue, queued);
    U32 start = kFirstMs + queued * kStepMs;
    const double ns = cpuNsEach(kCalls, [&] {
        for (U32 i = 0; i < kCalls; ++i, start += kStepMs) push(queue, start - queued * kStepMs + 1, start);
    });
    if (queue.m_vSubtitleInfo.size() > queued + 1) fail("entries did not expire");
    return ns;
}

/// The dearest place: in front of everything, while the queue grows to twice its size.
double pushInFront(U32 queued) {
    constexpr int kTimes = 20;
    double passed = 0;
    for (int i = 0; i < kTimes; ++i) {
        SubtitleParserInternal queue;
        fill(queue, queued);
        passed += cpuNs([&] {
            for (U32 k = 0; k < queued; ++k) push(queue, 0, 1000);
        });
    }
    return passed / kTimes / queued;
}

/// Which entry covers a time: times from all over the queue.
double getTag(U32 queued) {
    SubtitleParserInternal queue;
    fill(queue, queued);
    U32 at = 0, tag = 0;
    const double ns = cpuNsEach(kCalls, [&] {
        for (U32 i = 0; i < kCalls; ++i) {
            at = (at + 7919) % queued;
            keep(tag = queue.GetTag(0, kFirstMs + at * kStepMs + 5));
        }
    });
    if (tag == 0xFFFFFFFF) fail("no entry covers the time");
    return ns;
}

/// A player's whole question: tag, times, text.
double lookUp(U32 queued) {
    SubtitleParserInternal queue;
    fill(queue, queued);
    U32 at = 0, copied = 0;
    const double ns = cpuNsEach(kCalls, [&] {
        for (U32 i = 0; i < kCalls; ++i) {
            at = (at + 7919) % queued;
            const U32 tag = queue.GetTag(0, kFirstMs + at * kStepMs + 5);
            ST_MEDIA_SUBTITLE_PARSER_TAG info;
            U8 text[256];
            queue.GetTagInfo(0, tag, &info);
            keep(copied = queue.GetData(0, text, sizeof text, tag));
        }
    });
    if (copied == 0) fail("no text");
    return ns;
}

}  // namespace

void registerPushedQueue() {
    constexpr struct {
        const char* name;
        double (*measure)(U32 queued);
    } kRows[] = {
        {"push, and the first expires", pushAndExpire},
        {"push in front of all", pushInFront},
        {"GetTag", getTag},
        {"GetTag, GetTagInfo, GetData", lookUp},
    };
    begin({"The queue of pushed texts", "ns", Better::kLower, {}});
    for (const auto& row : kRows) {
        for (const U32 queued : {10U, 100U, 1000U}) {
            add(std::string(row.name) + ", " + std::to_string(queued) + " entries",
                [measure = row.measure, queued]() -> std::vector<Measure> {
                    return {[=] { return measure(queued); }};
                });
        }
    }
}

}  // namespace bench
