/// What the benchmarks know of each text format: a generator and a row. The dialects of .sub have theirs from their
/// list.
#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "subtitle/parser/TextParser.h"

namespace bench {

using namespace android;

enum Encoding { kEightBit, kUtf16Le, kUtf16Be };

struct Format {
    const char* name;
    /// About so many characters of a film's subtitles: single bytes, CR LF, times ascending.
    std::string (*film)(size_t size);
    std::unique_ptr<SubtitleParser> (*onDescriptor)(int fd);
    std::unique_ptr<SubtitleParser> (*onPath)(char* path);
    void (*scan)(SubtitleParser&);  ///< on the calling thread, over a raw buffer that holds the data
};

extern const std::vector<Format> formats;

const Format& formatNamed(const char* name);

struct NamedEncoding {
    Encoding encoding;
    const char* name;
};
constexpr NamedEncoding wideEncodings[] = {{kUtf16Le, "UTF-16 LE"}, {kUtf16Be, "UTF-16 BE"}};
constexpr NamedEncoding encodings[] = {{kEightBit, "8-bit"}, wideEncodings[0], wideEncodings[1]};

/// The film in an encoding, `size` bytes of it, with a byte-order mark where it is UTF-16.
std::string encode(const Format& format, Encoding encoding, size_t size);

/// A parser with `data` in its raw buffer, ready for `scan`.
std::unique_ptr<SubtitleParser> load(const Format& format, const std::string& data);

/// The same, scanned.
std::unique_ptr<SubtitleParser> loadAndScan(const Format& format, const std::string& data);

/// Whether the format reads films in that encoding: the scan of one gives tags.
bool reads(const Format& format, Encoding encoding);

/// The row of a format whose parser is `Parser`.
template <class Parser>
Format row(const char* name, std::string (*film)(size_t)) {
    using Base = std::unique_ptr<SubtitleParser>;
    return {
        name,
        film,
        [](int fd) -> Base { return std::make_unique<Parser>(fd, 0, 0); },
        [](char* path) -> Base {
            using Path = std::conditional_t<std::is_constructible_v<Parser, char*>, char*, U8*>;
            return std::make_unique<Parser>(reinterpret_cast<Path>(path));
        },
        [](SubtitleParser& parser) {
            vxsubtitle::prepareScan(parser, vxsubtitle::formatOf<Parser>());
            static_cast<Parser&>(parser).ParserThread();
        },
    };
}

}  // namespace bench
