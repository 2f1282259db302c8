// Lookups in the conversion tables, each over codes from all over its table.
#include "bench/Table.h"
#include "subtitle/SubtitleParser.h"

namespace bench {

using namespace android;

namespace {

template <class Code>
void lookUp(benchmark::State& state, U16 (SubtitleParser::*convert)(Code), U32 first, U32 last) {
    SubtitleParser parser;
    U32 code = first;
    for (auto _ : state) {
        code = first + (code - first + 7919) % (last - first + 1);
        benchmark::DoNotOptimize((parser.*convert)(static_cast<Code>(code)));
    }
    reportRate(state, "per s", 1);
}

}  // namespace

void registerCharset() {
    constexpr const char* kGroup = "table lookups";
    add(kGroup, "GBK",
        [](benchmark::State& state) { lookUp<U16>(state, &SubtitleParser::GBToUnicode, 0x8140, 0xFEFE); });
    add(kGroup, "Big5",
        [](benchmark::State& state) { lookUp<U16>(state, &SubtitleParser::BIG52Unicode, 0xA140, 0xF9D5); });
    add(kGroup, "Windows-1256",
        [](benchmark::State& state) { lookUp<U8>(state, &SubtitleParser::Farsi2Unicode, 0x80, 0xFF); });
    add(kGroup, "Windows-1252",
        [](benchmark::State& state) { lookUp<U8>(state, &SubtitleParser::Spanish2Unicode, 0x80, 0xFF); });
    add(kGroup, "ISO 8859-8",
        [](benchmark::State& state) { lookUp<U8>(state, &SubtitleParser::Hebrew2Unicode, 0xAA, 0xFE); });
}

}  // namespace bench
