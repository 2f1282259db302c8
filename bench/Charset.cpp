// Lookups in the conversion tables, each over codes from all over its table.
#include "bench/Table.h"
#include "subtitle/SubtitleParser.h"

namespace bench {

using namespace android;

namespace {

constexpr U32 kLookups = 1000;

template <class Code>
void addTable(const char* title, U16 (SubtitleParser::*convert)(Code), U32 first, U32 last) {
    add(title, [=]() -> std::vector<Measure> {
        return {[=] {
            SubtitleParser parser;
            U32 code = first;
            return cpuNsEach(kLookups, [&] {
                for (U32 i = 0; i < kLookups; ++i) {
                    code = first + (code - first + 7919) % (last - first + 1);
                    keep((parser.*convert)(static_cast<Code>(code)));
                }
            });
        }};
    });
}

}  // namespace

void registerCharset() {
    begin({"A code looked up in a conversion table", "ns", Better::kLower, {}});
    addTable<U16>("GBK", &SubtitleParser::GBToUnicode, 0x8140, 0xFEFE);
    addTable<U16>("Big5", &SubtitleParser::BIG52Unicode, 0xA140, 0xF9D5);
    addTable<U8>("Windows-1256", &SubtitleParser::Farsi2Unicode, 0x80, 0xFF);
    addTable<U8>("Windows-1252", &SubtitleParser::Spanish2Unicode, 0x80, 0xFF);
    addTable<U8>("ISO 8859-8", &SubtitleParser::Hebrew2Unicode, 0xAA, 0xFE);
}

}  // namespace bench
