/// What the author of a subtitle file meant: every entry with the times and the text that a person reads in the file,
/// however the library takes it.
///
/// The readers are tolerant where authors are: about line ends, marks, blanks, fractions, missing hours or numbers.
/// They know nothing of the library and nothing of the platform; encodings come through a small interface
/// (Encodings.h).
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/meant/Encodings.h"
#include "tools/meant/Formats.h"

namespace meant {

using Ms = int64_t;

/// Where something stands in the file.
struct Place {
    size_t offset = 0;  ///< bytes
    size_t line = 1;    ///< counted from 1
};

/// Where an entry's end comes from.
enum class End {
    Given,  ///< the file says it
    Next,   ///< the file says none: it lasts until another begins
    Open,   ///< nothing says one; `end` is the start
};

/// Why a part of the file is an entry and yet not meant to be seen.
enum class Unseen {
    No,
    Empty,    ///< it has no text
    Comment,  ///< it is marked as one
    Drawing,  ///< it holds nothing but vector shapes
};

struct Entry {
    Ms start = 0;  ///< may be negative
    Ms end = 0;    ///< may lie before the start, where the file says so
    End endFrom = End::Open;
    std::string text;      ///< UTF-8 without markup, '\n' between lines
    Place place;           ///< of the line, or SAMI element, with its start
    size_t behind = 0;     ///< offset behind its last line
    std::string language;  ///< SAMI: the class, as its first mention spells it
    Unseen unseen = Unseen::No;
};

/// A part of a SAMI file that is meant for readers of one language.
struct Language {
    std::string name;  ///< the class
    size_t entries = 0;
};

enum class EncodingFrom {
    Mark,     ///< a byte-order mark
    Told,     ///< by the options
    Content,  ///< it can be nothing else: plain ASCII, well-formed UTF-8, 16-bit or 32-bit text
    Guessed,
    Assumed,  ///< nothing told it
};

struct Encoding {
    std::string name;  ///< "UTF-8", "UTF-16LE", "WINDOWS-1252"; "ASCII" for text that is the same in all
    EncodingFrom from = EncodingFrom::Assumed;
    size_t damaged = 0;  ///< characters that are none, U+FFFD in the texts
};

struct LineEnds {
    size_t lf = 0, crLf = 0, cr = 0;
};

enum class RateFrom {
    None,     ///< no time counts frames
    File,     ///< its rate line
    Told,     ///< by the options
    Frames,   ///< a second has more frames than the usual rate
    Assumed,  ///< 25
};

struct Rate {
    uint32_t thousandths = 0;  ///< frames in 1000 seconds
    RateFrom from = RateFrom::None;
};

struct Options {
    std::string ending;            ///< of the file's name, "srt"; decides where the content leaves it open
    std::string encoding;          ///< of text without a mark; empty: found out
    uint32_t rateThousandths = 0;  ///< for frames without a rate line; 0: not known
};

struct File {
    Format format = Format::None;
    bool endingMisleads = false;  ///< the name's ending stands for another format
    std::string nature;           ///< what it is instead, when it is no subtitle file: "a PNG picture"
    Encoding encoding;
    LineEnds lineEnds;
    Rate rate;
    std::string delay;                ///< what the header says of a delay other than 0; the times are without it
    std::vector<Entry> entries;       ///< in the order of the file
    std::vector<Entry> unseen;        ///< likewise
    std::vector<Language> languages;  ///< SAMI, in the order of their first entries
    std::vector<Place> strayLines;    ///< lines between the entries that say nothing to the format
};

/// Reads a file that lies in `bytes`. Takes time in proportion to their number, whatever they are.
File read(std::string_view bytes, const Options& options, const Encodings& encodings);

}  // namespace meant
