#include "bench/Formats.h"

#include <stdlib.h>
#include <string.h>

#include "bench/Films.h"
#include "subtitle/SubtitleParserSMI.h"
#include "subtitle/SubtitleParserSRT.h"
#include "subtitle/SubtitleParserSSA.h"
#include "subtitle/SubtitleParserSubDvbSubtitleSystem.h"
#include "subtitle/SubtitleParserSubMicroDVD.h"
#include "subtitle/SubtitleParserSubViewer10.h"
#include "subtitle/SubtitleParserSubViewer20.h"
#include "subtitle/SubtitleParserTXT.h"
#include "tests/support/Interpose.h"

namespace bench {

const std::vector<Format> formats = {
    row<SubtitleParserSRT>("SRT", srtFilm),
    row<SubtitleParserSSA>("SSA", ssaFilm),
    row<SubtitleParserSMI>("SAMI", smiFilm),
    row<SubtitleParserTXT>("TXT", txtFilm),
    row<SubtitleParserSubViewer20>("SubViewer 2.0", subViewer20Film, kEightBit | kUtf16Le),
    row<SubtitleParserSubViewer10>("SubViewer 1.0", subViewer10Film),
    row<SubtitleParserSubMicroDVD>("MicroDVD", microDvdFilm),
    row<SubtitleParserSubDvbSubtitleSystem>("DVB subtitle system", dvbFilm, kEightBit | kUtf16Le),
};

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

}  // namespace bench
