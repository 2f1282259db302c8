// Which entry began last: times from all over the film.
#include "bench/Formats.h"
#include "bench/Table.h"

namespace bench {

namespace {

using Tag = ST_MEDIA_SUBTITLE_PARSER_TAG;

constexpr U32 kLookups = 1000;

/// A film of so many entries, at even distances.
std::shared_ptr<SubtitleParser> filmOf(U32 entries) {
    std::shared_ptr<SubtitleParser> parser = load(formatNamed("SRT"), "");
    for (U32 i = 0; i < entries; ++i)
        parser->AddTag(i * 40 + 40, i * 40 + 60, i, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE);
    return parser;
}

U32 byHand(const SubtitleParser& parser, U32 time) {
    const Tag* const tags = parser.m_pTagBuffer;
    const Tag* const behind = std::upper_bound(tags, tags + parser.m_u32TagNum, time,
                                               [](U32 t, const Tag& tag) { return t < tag.u32TimeStart; });
    return behind == tags ? 0 : static_cast<U32>(behind - tags) - 1;
}

template <class LookUp>
Measure measured(U32 entries, LookUp lookUp) {
    return [=] {
        U64 time = 0;
        return cpuNsEach(kLookups, [&] {
            for (U32 i = 0; i < kLookups; ++i) {
                time = (time + 2654435761U) % (U64{entries} * 40);
                keep(lookUp(static_cast<U32>(time)));
            }
        });
    };
}

std::vector<Measure> ways(U32 entries) {
    const std::shared_ptr<SubtitleParser> parser = filmOf(entries);
    for (U32 time = 0; time < 50000; time += 7) {
        if (parser->GetTag(0, time) != byHand(*parser, time)) fail("another entry by hand");
    }
    return {measured(entries, [parser](U32 time) { return parser->GetTag(0, time); }),
            measured(entries, [parser](U32 time) { return byHand(*parser, time); })};
}

}  // namespace

void registerLookup() {
    begin({"Lookup by time", "ns", Better::kLower, {"by hand"}});
    add("1,500 entries", [] { return ways(1500); });
    add("500,000 entries", [] { return ways(500000); });
}

}  // namespace bench
