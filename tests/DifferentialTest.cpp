// Every format against a second reading of it (tests/reference): files made at random, damaged, and asked alike.
//
// VX_DIFFERENTIAL=200000 DifferentialTest runs that many cases of each format instead of the few of the suite;
// VX_DIFFERENTIAL_SEED=N begins with another seed. A difference is shown with the seed that makes it the first case.
#include <gtest/gtest.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "subtitle/MPEGSubtitleDecoder.h"
#include "subtitle/SubtitleParserSMI.h"
#include "subtitle/SubtitleParserSRT.h"
#include "subtitle/SubtitleParserSSA.h"
#include "subtitle/SubtitleParserSUB.h"
#include "subtitle/SubtitleParserSUBIDX.h"
#include "subtitle/SubtitleParserSubDvbSubtitleSystem.h"
#include "subtitle/SubtitleParserSubMicroDVD.h"
#include "subtitle/SubtitleParserSubViewer10.h"
#include "subtitle/SubtitleParserSubViewer20.h"
#include "subtitle/SubtitleParserTXT.h"
#include "tests/reference/Films.h"
#include "tests/reference/Reference.h"
#include "tests/support/Cuts.h"
#include "tests/support/DialectFilm.h"
#include "tests/support/Interpose.h"
#include "tests/support/VobSubPair.h"

using namespace android;

namespace {

using Answer = std::string;

/// A file, and how it is asked.
struct Case {
    std::string file;
    std::vector<U32> sizes;  ///< of the buffers for each text
    U32 rate;                ///< frames a second, as the player sets it
    bool big5;               ///< the device's language
};

/// One format: how its files are made, and who answers.
struct Format {
    const char* name;
    std::string (*make)(reference::Random&);
    Answer (*ours)(const Case&);
    Answer (*reference)(const Case&);
    const char* entry = nullptr;  ///< one entry, as `dialectEntry` writes it; null where there are no texts
};

void PrintTo(const Format& format, std::ostream* out) { *out << format.name; }

// ---------------------------------------------------------------------------------------------------- answers

void say(Answer& out, const char* format, ...) __attribute__((format(printf, 2, 3)));
void say(Answer& out, const char* format, ...) {
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    out += text;
}

std::string escaped(const std::string& bytes) {
    std::string out;
    for (const char c : bytes) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (c == '\r' || c == '\n') {
            out += c == '\r' ? "\\r" : "\\n";
        } else if (byte < 32 || byte > 126 || c == '\\' || c == '"') {
            say(out, "\\x%02X", byte);
        } else {
            out += c;
        }
    }
    return out;
}

void sayUnits(Answer& out, const std::vector<unsigned>& units, bool terminated) {
    if (units.empty() && !terminated) {
        out += "untouched\n";
        return;
    }
    say(out, "%zu \"", units.size());
    for (const unsigned unit : units) {
        if (unit >= 32 && unit < 127) {
            out += static_cast<char>(unit);
        } else {
            say(out, unit == 13 ? "\\r" : unit == 10 ? "\\n" : "\\x%02X", unit);
        }
    }
    out += terminated ? "\"\n" : "\" open\n";
}

void sayTag(Answer& out, size_t index, U32 start, U32 end, S64 pos) {
    say(out, "entry %zu: %u-%u @%lld\n", index, start, end, pos);
}

void sayLog(Answer& out, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) out += "log: " + escaped(line) + "\n";
}

/// The times worth asking for: around every start, and the ends of the range.
template <class Tags>
std::vector<U32> times(const Tags& starts) {
    std::vector<U32> all = {0, 1000, 0x7FFFFFFF, 0xFFFFFFFF};
    for (const U32 start : starts) {
        all.push_back(start);
        all.push_back(start - 1);
    }
    return all;
}

// ------------------------------------------------------------------------------------------------ the library

/// What a text request leaves in a buffer of exactly `size` bytes. `cut`: a line end may stand behind the text.
template <class Ask>
void sayText(Answer& out, U32 size, bool wide, bool cut, Ask ask) {
    constexpr U8 kUntouched = 0xEE;
    const std::unique_ptr<U8[]> buffer(new U8[size]);
    std::fill_n(buffer.get(), size, kUntouched);
    const U32 count = ask(buffer.get());
    const size_t width = wide ? 2 : 1;
    if (count * width > size) {
        out += "more than the buffer holds\n";
        return;
    }
    std::vector<unsigned> units;
    for (size_t i = 0; i < count; ++i) {
        units.push_back(wide ? unsigned(buffer[2 * i] | buffer[2 * i + 1] << 8) : buffer[i]);
    }
    const size_t end = count * width;
    const bool terminated = end + width <= size && buffer[end] == 0 && buffer[end + width - 1] == 0;
    const size_t used = std::min<size_t>(size, end + (terminated ? width : 0) + (cut ? 2 * width : 0));
    if (std::any_of(buffer.get() + used, buffer.get() + size, [](U8 byte) { return byte != kUntouched; })) {
        out += "written behind ";
    }
    sayUnits(out, units, terminated);
}

/// One nameless file for all cases.
int fileOf(const std::string& content) {
    static const int fd = memfd_create("differential", MFD_CLOEXEC);
    if (fd < 0 || ftruncate(fd, 0) != 0 || lseek(fd, 0, SEEK_SET) != 0 ||
        pwrite(fd, content.data(), content.size(), 0) != static_cast<ssize_t>(content.size())) {
        abort();
    }
    return fd;
}

/// Who holds the entries.
template <class Parser>
SubtitleParser& holderOf(Parser& parser) {
    return parser;
}
SubtitleParser& holderOf(SubtitleParserSUB& parser) { return *parser.m_pParser; }

template <class Parser>
Parser opened(const std::string& content) {
    return Parser(fileOf(content), 0, static_cast<S64>(content.size()));
}
/// By its path: it would keep a duplicate of a descriptor.
template <>
SubtitleParserSUB opened(const std::string& content) {
    char path[32];
    snprintf(path, sizeof path, "/proc/self/fd/%d", fileOf(content));
    return SubtitleParserSUB(reinterpret_cast<U8*>(path));
}

template <class Parser>
Answer parsed(const Case& c) {
    constexpr bool kTrims = std::is_same_v<Parser, SubtitleParserTXT>;
    const std::unique_ptr<test::SystemProperty> language(
        c.big5 ? new test::SystemProperty("vendor.quarn.subtitle.language", "Big5") : nullptr);
    Parser parser = opened<Parser>(c.file);
    parser.SetFrameRate(c.rate);
    Answer out;
    if (parser.BeginParse() != TRUE) return "refused\n";
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
    parser.GetTrackInfo(0, &info);
    say(out, "code type %u\n", unsigned{info.eCodeType});
    if (std::is_same_v<Parser, SubtitleParserSUB>) say(out, "dialect %u\n", unsigned{info.eSubtitleType});
    const bool wide = test::isWide(info.eCodeType);
    std::vector<U32> starts;
    for (U32 i = 0; i < parser.GetTagNum(); ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& tag = holderOf(parser).m_pTagBuffer[i];
        starts.push_back(tag.u32TimeStart);
        sayTag(out, i, tag.u32TimeStart, tag.u32TimeEnd, tag.s64Pos);
        for (const U32 size : c.sizes) {
            say(out, " in %u: ", size);
            sayText(out, size, wide, kTrims, [&](U8* buffer) { return parser.GetData(0, buffer, size, i); });
            if (!std::is_same_v<Parser, SubtitleParserSubDvbSubtitleSystem>) continue;
            say(out, " in %u, timed: ", size);
            sayText(out, size, wide, true, [&](U8* buffer) {
                stSubDecoderInfo geometry;
                SubtitleParser& base = parser;
                return base.GetData(0, buffer, size, i, &geometry);
            });
        }
    }
    for (const U32 time : times(starts)) say(out, "at %u: %u\n", time, parser.GetTag(0, time));
    return out;
}

Answer indexed(const Case& c) {
    static test::VobSubInMemory files;
    SubtitleParserSUBIDX& parser = files.parser;
    std::fill_n(parser.m_au32Palette, 16, 0);
    parser.m_au32Palette[0] = 0xFF000000;
    parser.m_u32OriginX = parser.m_u32OriginY = parser.m_u32Width = parser.m_u32Height = 0;
    std::vector<std::string> log;
    {
        const test::LogCapture capture;
        files.load(c.file, "");
        log = capture.texts();
    }
    Answer out;
    if (parser.bParseFinish != TRUE) out += "not finished\n";
    say(out, "code type %u\n", c.file.empty() ? 0 : unsigned{parser.m_eCodeType});
    std::vector<U32> starts;
    for (U32 i = 0; i < parser.GetTagNum(); ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& tag = parser.m_pTagBuffer[i];
        starts.push_back(tag.u32TimeStart);
        sayTag(out, i, tag.u32TimeStart, tag.u32TimeEnd, tag.s64Pos);
    }
    for (U32 t = 0; t < parser.m_vPrivateTrackInfo.size(); ++t) {
        const auto& track = parser.m_vPrivateTrackInfo[t];
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
        parser.GetTrackInfo(t, &info);
        say(out, "track %u: language %u, %u-%u\n", t, unsigned{info.eLanguage}, track.u32TagStart, track.u32TagEnd);
        for (const U32 time : times(starts)) say(out, " at %u: %u\n", time, parser.GetTag(t, time));
    }
    for (const U32 colour : parser.m_au32Palette) say(out, "%08x ", colour);
    say(out, "\nsize %u x %u, origin %u, %u\n", parser.m_u32Width, parser.m_u32Height, parser.m_u32OriginX,
        parser.m_u32OriginY);
    sayLog(out, log);
    return out;
}

// A palette whose colours tell their places.
constexpr U32 kPalette[16] = {0x000000, 0x111213, 0x212223, 0x313233, 0x414243, 0x515253, 0x616263, 0x717273,
                              0x818283, 0x919293, 0xA1A2A3, 0xB1B2B3, 0xC1C2C3, 0xD1D2D3, 0xE1E2E3, 0xF1F2F3};

void sayPicture(Answer& out, bool decoded, const U16 (&place)[4], const U32 (&colours)[4], U8 transparent,
                const std::string& bitmap) {
    if (decoded) {
        say(out, "%u x %u at %u, %u; colours %08x %08x %08x %08x, %u\n", place[0], place[1], place[2], place[3],
            colours[0], colours[1], colours[2], colours[3], transparent);
    } else {
        out += "refused\n";
    }
    const size_t width = decoded && place[0] != 0 ? place[0] : 64;
    const size_t used = bitmap.find_last_not_of('\0') + 1;
    for (size_t i = 0; i < used; ++i) {
        out += ".123"[bitmap[i] & 3];
        if (i % width == width - 1) out += '\n';
    }
    out += '\n';
}

Answer decoded(const Case& c) {
    static MPEGSubtitleDecoder decoder;
    U32 palette[16];
    std::copy_n(kPalette, 16, palette);
    decoder.Set_VobSub_Palette(palette, 16);
    std::string unit = c.file;
    std::vector<U8> bitmap(c.sizes[0]);
    stSubDecoderInfo info{};
    U8 transparent = 0;
    U32 colours[4] = {};
    const test::LogCapture capture;
    const BOOL done = decoder.Decode(reinterpret_cast<U8*>(&unit[0]), static_cast<U16>(unit.size()), bitmap.data(),
                                     c.sizes[0], &transparent, reinterpret_cast<RGBPaletteColor*>(colours), &info);
    Answer out;
    sayPicture(out, done == TRUE, {info.u16Width, info.u16Height, info.u16X, info.u16Y}, colours, transparent,
               std::string(bitmap.begin(), bitmap.end()));
    sayLog(out, capture.texts());
    return out;
}

// ---------------------------------------------------------------------------------------------- the reference

void sayShown(Answer& out, const reference::Shown& shown) { sayUnits(out, shown.units, shown.terminated); }

template <class Text>
Answer filmed(const Case& c, const reference::Film& film, Text text, const char* dialect = nullptr) {
    if (!film.accepted) return "refused\n";
    Answer out;
    say(out, "code type %u\n", unsigned{film.file.code});
    if (dialect != nullptr) out += dialect;
    // a code type that is not decided makes no difference to texts
    reference::Film typed = film;
    if (film.file.code > reference::kNative) typed.file.code = reference::kNative;
    std::vector<U32> starts;
    for (size_t i = 0; i < film.tags.size(); ++i) {
        const reference::Tag& tag = film.tags[i];
        starts.push_back(tag.start);
        sayTag(out, i, tag.start, tag.end, tag.pos);
        for (const U32 size : c.sizes) {
            say(out, " in %u: ", size);
            text(out, typed, i, size);
        }
    }
    const S32 last = static_cast<S32>(film.tags.size()) - 1;
    for (const U32 time : times(starts)) say(out, "at %u: %u\n", time, reference::entryAt(film.tags, time, 0, last));
    return out;
}

using Extract = reference::Shown (*)(const reference::Film&, size_t, U32);

void dvbText(Answer& out, const reference::Film& film, size_t i, U32 size) {
    sayShown(out, reference::lineText(film, i, size));
    say(out, " in %u, timed: ", size);
    sayShown(out, reference::timedText(film, i, size));
}

Answer ownAnswer(const Case& c, const reference::Film& film, Extract extract) {
    return filmed(c, film, [extract](Answer& out, const reference::Film& typed, size_t i, U32 size) {
        sayShown(out, extract(typed, i, size));
    });
}

Answer baseAnswer(const Case& c, const reference::Film& film) {
    return filmed(c, film, [&](Answer& out, const reference::Film& typed, size_t i, U32 size) {
        sayShown(out, reference::baseText(typed, i, size, c.big5));
    });
}

/// The first dialect that accepts the file.
Answer subAnswer(const Case& c) {
    const auto line = [](Answer& out, const reference::Film& typed, size_t i, U32 size) {
        sayShown(out, reference::lineText(typed, i, size));
    };
    const auto base = [&c](Answer& out, const reference::Film& typed, size_t i, U32 size) {
        sayShown(out, reference::baseText(typed, i, size, c.big5));
    };
    const reference::Film second = reference::scanSubViewer20(c.file);
    if (second.accepted) return filmed(c, second, base, "dialect 4\n");
    const reference::Film first = reference::scanSubViewer10(c.file);
    if (first.accepted) return filmed(c, first, line, "dialect 3\n");
    const reference::Film frames = reference::scanMicroDvd(c.file, c.rate);
    if (frames.accepted) return filmed(c, frames, line, "dialect 5\n");
    return filmed(c, reference::scanDvb(c.file), line, "dialect 6\n");
}

Answer indexAnswer(const Case& c) {
    const reference::Index index = reference::scanIndex(c.file);
    Answer out;
    say(out, "code type %u\n", c.file.empty() ? 0 : unsigned{index.code});
    std::vector<U32> starts;
    for (size_t i = 0; i < index.tags.size(); ++i) {
        starts.push_back(index.tags[i].start);
        sayTag(out, i, index.tags[i].start, index.tags[i].end, index.tags[i].pos);
    }
    for (size_t t = 0; t < index.tracks.size(); ++t) {
        const reference::Track& track = index.tracks[t];
        say(out, "track %zu: language %u, %u-%u\n", t, track.language, track.first, track.last);
        for (const U32 time : times(starts)) {
            say(out, " at %u: %u\n", time,
                reference::entryAt(index.tags, time, static_cast<S32>(track.first), static_cast<S32>(track.last)));
        }
    }
    for (const U32 colour : index.palette) say(out, "%08x ", colour);
    say(out, "\nsize %u x %u, origin %u, %u\n", index.width, index.height, index.originX, index.originY);
    sayLog(out, index.log);
    return out;
}

Answer unitAnswer(const Case& c) {
    const reference::Unit unit = reference::decodeUnit(c.file, kPalette, c.sizes[0]);
    Answer out;
    sayPicture(out, unit.decoded, {unit.width, unit.height, unit.x, unit.y}, unit.colours, unit.transparent,
               unit.bitmap);
    sayLog(out, unit.log);
    return out;
}

#define VX_SUB_DIALECT(name, type, target, title, entry) constexpr char k##name[] = entry;
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT

const Format kFormats[] = {
    {"SRT", reference::makeSrt, parsed<SubtitleParserSRT>,
     [](const Case& c) { return baseAnswer(c, reference::scanSrt(c.file)); },
     "1\r\n$h:$m:$s,0$c --> $H:$M:$S,0$C\r\n$t\r\n\r\n"},
    {"SSA", reference::makeSsa, parsed<SubtitleParserSSA>,
     [](const Case& c) { return ownAnswer(c, reference::scanSsa(c.file), reference::ssaText); },
     "Dialogue: 0,$h:$m:$s.$c,$H:$M:$S.$C,D,,0,0,0,,$t\r\n"},
    {"SMI", reference::makeSmi, parsed<SubtitleParserSMI>,
     [](const Case& c) { return ownAnswer(c, reference::scanSmi(c.file), reference::smiText); },
     "<SYNC Start=$f><P>$t\r\n"},
    {"TXT", reference::makeTxt, parsed<SubtitleParserTXT>,
     [](const Case& c) { return ownAnswer(c, reference::scanTxt(c.file), reference::txtText); },
     "$h:$m:$s,1=$t\r\n$h:$m:$s,2=$t\r\n$H:$M:$S,1=\r\n$H:$M:$S,2=\r\n"},
    {"SubViewer20", reference::makeSubViewer20, parsed<SubtitleParserSubViewer20>,
     [](const Case& c) { return baseAnswer(c, reference::scanSubViewer20(c.file)); }, kSubViewer20},
    {"SubViewer10", reference::makeSubViewer10, parsed<SubtitleParserSubViewer10>,
     [](const Case& c) { return ownAnswer(c, reference::scanSubViewer10(c.file), reference::lineText); }, kSubViewer10},
    {"MicroDVD", reference::makeMicroDvd, parsed<SubtitleParserSubMicroDVD>,
     [](const Case& c) { return ownAnswer(c, reference::scanMicroDvd(c.file, c.rate), reference::lineText); },
     kSubMicroDVD},
    {"DVB", reference::makeDvb, parsed<SubtitleParserSubDvbSubtitleSystem>,
     [](const Case& c) { return filmed(c, reference::scanDvb(c.file), dvbText); }, kSubDvbSubtitleSystem},
    {"Sub", reference::makeSub, parsed<SubtitleParserSUB>, subAnswer},
    {"Index", reference::makeIndex, indexed, indexAnswer},
    {"Unit", reference::makeUnit, decoded, unitAnswer},
};

// ------------------------------------------------------------------------------------------------------- cases

Case makeCase(const Format& format, unsigned seed) {
    reference::Random random(seed);
    Case c;
    c.file = format.make(random);
    const std::vector<U32> small = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 16, 17, 24, 40, 100};
    if (strcmp(format.name, "Unit") == 0) {
        c.sizes = {random.percent(15) ? random.below(600) : 3000};
    } else {
        c.sizes = {8192, random.of(small), random.of(small), 6 + random.below(60)};
    }
    c.rate = random.of<U32>({0, 25, 25, 24, 23976, 29970, 99, 100, 1000, 1001, 1499, 1500, 120, 4000000000});
    c.big5 = random.percent(10);
    return c;
}

/// Whether the answers differ. What the reference cannot decide is not looked at.
bool differ(const Format& format, const Case& c, Answer* library = nullptr, Answer* own = nullptr) {
    Answer first = format.ours(c);
    const Answer second = format.reference(c);
    const std::string undecided = "code type " + std::to_string(reference::kUndecided) + "\n";
    if (second.compare(0, undecided.size(), undecided) == 0) {
        for (const unsigned type :
             {reference::kNative, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK}) {
            const std::string line = "code type " + std::to_string(type) + "\n";
            if (first.compare(0, line.size(), line) == 0) first.replace(0, line.size(), undecided);
        }
    }
    const bool different = first != second;
    if (library != nullptr) *library = first;
    if (own != nullptr) *own = second;
    return different;
}

/// Drops what is not needed for a difference: first lines' worth of bytes, then single ones.
Case shrunk(const Format& format, Case c) {
    for (size_t k = c.sizes.size(); c.sizes.size() > 1 && k-- > 0;) {
        Case less = c;
        less.sizes.erase(less.sizes.begin() + static_cast<std::ptrdiff_t>(k));
        if (differ(format, less)) c = less;
    }
    for (size_t length = c.file.size(); length > 0; length /= 2) {
        bool again = true;
        while (again) {
            again = false;
            for (size_t at = 0; at < c.file.size();) {
                Case less = c;
                less.file.erase(at, length);
                if (differ(format, less)) {
                    c = less;
                    again = length <= 2;
                } else {
                    at += length > 2 ? (length + 1) / 2 : 1;
                }
            }
        }
    }
    return c;
}

unsigned fromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = getenv(name);
    return text != nullptr ? static_cast<unsigned>(strtoul(text, nullptr, 10)) : otherwise;
}

std::string grouped(unsigned number) {
    std::string digits = std::to_string(number);
    for (size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
    return digits;
}

/// Fails with the smallest part of a case that still differs.
void showDifference(const Format& format, const Case& whole, const std::string& origin) {
    const Case small = shrunk(format, whole);
    Answer library, own;
    differ(format, small, &library, &own);
    ADD_FAILURE() << format.name << ", " << origin << " (rate " << small.rate << (small.big5 ? ", Big5)" : ")")
                  << "\nfile: \"" << escaped(small.file) << "\"\nlibrary:\n"
                  << library << "reference:\n"
                  << own;
}

/// What a walk looks at, and its look-alikes.
std::vector<std::string> pieces() {
    std::vector<std::string> all = {
        "\r\n",     "\n\r",        "\r\n\r\n",  "\n\n",     "\r\n0",       "\r\n<SYNC", "<i>",
        "</i>\r\n", "<i>\r\n\r\n", "<i><b>",    "<3",       "<i\r\n>",     "{y:i}",     "{y:i}\r\n",
        "{y}<b>",   "{y}<b",       "{\\an8}",   "{y\n}",    "&nbsp;",      "<br>\r\n",  "<br>",
        "00:00:01", "00:00:0",     "0:00:00:0", "\xA4\x40", "\xA4\x40<i>", "\x85\r\n",
    };
    for (unsigned byte = 0; byte < 256; ++byte) all.emplace_back(1, static_cast<char>(byte));
    return all;
}

/// A film in which `piece` stands in each entry, one column further on than in the one before, from `first` to `last`.
std::string filmOf(const Format& format, const std::string& piece, unsigned first, unsigned last) {
    std::string film;
    for (unsigned column = first; column <= last; ++column) {
        const std::string text = std::string(column, 'x') + piece + (column % 2 == 0 ? "" : "and what is behind it");
        film += test::dialectEntry(format.entry, 4000 * (column - first), 4000 * (column - first) + 2000, text);
    }
    return film;
}

class Differential : public testing::TestWithParam<Format> {};

}  // namespace

TEST_P(Differential, LibraryAndReferenceAgree) {
    constexpr unsigned kSeed = 1;
    constexpr unsigned kShown = 3;
    const unsigned seed = fromEnvironment("VX_DIFFERENTIAL_SEED", kSeed);
    const unsigned cases = fromEnvironment("VX_DIFFERENTIAL", test::scaled(2000));
    const Format& format = GetParam();
    const test::ThreadsEndFirst threadsEndFirst;
    unsigned differences = 0, withEntries = 0;
    for (unsigned i = 0; i < cases; ++i) {
        const Case whole = makeCase(format, seed + i);
        Answer library, own;
        const bool different = differ(format, whole, &library, &own);
        withEntries += library.find("entry 0") != std::string::npos || library.find("; colours") != std::string::npos;
        if (!different || ++differences > kShown) continue;
        showDifference(format, whole, "VX_DIFFERENTIAL_SEED=" + std::to_string(seed + i));
    }
    printf("| `%s` | %s | %s | %s | %u |\n", format.name, grouped(cases).c_str(), grouped(withEntries).c_str(),
           differences == 0 ? "none" : grouped(differences).c_str(), seed);
    EXPECT_EQ(0U, differences);
    if (cases >= 100) {
        EXPECT_GT(withEntries, cases / 4) << "many files hold something";
    }
}

// Plain text is copied in blocks: no piece is missed wherever it stands in one, at the end of the text, of the work
// buffer or of the player's.
TEST_P(Differential, APieceInEveryColumn) {
    const Format& format = GetParam();
    if (format.entry == nullptr) return;
    const test::ThreadsEndFirst threadsEndFirst;
    const unsigned every = 100 / test::scaled(100);
    unsigned cases = 0;
    const auto compare = [&](const std::string& piece, unsigned first, unsigned last, const std::vector<U32>& sizes) {
        const std::string film = filmOf(format, piece, first, last);
        for (const std::string& file : {film, test::utf16le(film), test::utf16be(film)}) {
            if (cases++ % every != 0) continue;
            const Case c{file, sizes, 25, cases % 2 == 0};
            if (differ(format, c)) showDifference(format, c, "\"" + escaped(piece) + "\"");
        }
    };
    for (const std::string& piece : pieces()) {
        compare(piece, 0, 33, {8192, 21, 40, 41});
        if (piece.size() == 1 && strchr("\r\n<{&|", piece[0]) == nullptr) continue;
        compare(piece, 4070, 4100, {20000});
        compare(piece, 8165, 8195, {20000});
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, Differential, testing::ValuesIn(kFormats),
                         [](const auto& format) { return std::string(format.param.name); });
