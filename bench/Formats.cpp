#include "bench/Formats.h"

#include <SubDialectHeaders.h>
#include <stdlib.h>
#include <string.h>

#include "bench/Films.h"
#include "subtitle/SubtitleParserSMI.h"
#include "subtitle/SubtitleParserSRT.h"
#include "subtitle/SubtitleParserSSA.h"
#include "subtitle/SubtitleParserTXT.h"
#include "tests/support/Interpose.h"

namespace bench {

const std::vector<Format> formats = {
    row<SubtitleParserSRT>("SRT", srtFilm),
    row<SubtitleParserSSA>("SSA", ssaFilm),
    row<SubtitleParserSMI>("SAMI", smiFilm),
    row<SubtitleParserTXT>("TXT", txtFilm),
#define VX_SUB_DIALECT(name, type, target, people, pattern) \
    row<SubtitleParser##name>(people, [](size_t size) { return dialectFilm(pattern, size); }),
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
};

const Format& formatNamed(const char* name) {
    for (const Format& format : formats) {
        if (strcmp(format.name, name) == 0) return format;
    }
    abort();
}

std::string encode(const Format& format, Encoding encoding, size_t size) {
    if (encoding == kEightBit) return format.film(size);
    const std::string film = format.film(size / 2);
    return encoding == kUtf16Le ? test::utf16le(film) : test::utf16be(film);
}

std::unique_ptr<SubtitleParser> load(const Format& format, const std::string& data) {
    std::unique_ptr<SubtitleParser> parser = format.onDescriptor(-1);
    if (parser->Init(data.size()) != TRUE) abort();
    memcpy(parser->m_pu8RawBuffer, data.data(), data.size());
    return parser;
}

std::unique_ptr<SubtitleParser> loadAndScan(const Format& format, const std::string& data) {
    std::unique_ptr<SubtitleParser> parser = load(format, data);
    format.scan(*parser);
    return parser;
}

bool reads(const Format& format, Encoding encoding) {
    return loadAndScan(format, encode(format, encoding, 1000))->GetTagNum() > 0;
}

}  // namespace bench
