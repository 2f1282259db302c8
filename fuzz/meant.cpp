// The meant reading of any file, held against what must be true of every answer.
#include "tools/meant/Meant.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "fuzz/Drivers.h"
#include "tools/meant/Utf8.h"

namespace {

using meant::Entry;
using meant::File;

constexpr const char* kEndings[] = {"srt", "ass", "smi", "txt", "sub", ""};

void requireText(const std::string& text) {
    std::string copy;
    for (std::string_view rest = text; !rest.empty();) meant::appendUtf8(&copy, meant::takeUtf8(&rest));
    fuzz::require(copy == text, "texts are UTF-8");
    fuzz::require(text.empty() || (text.front() != '\n' && text.back() != '\n'),
                  "texts have no empty lines at their ends");
}

void requireEntries(const std::vector<Entry>& entries, size_t size) {
    for (const Entry& entry : entries) {
        requireText(entry.text);
        fuzz::require(entry.place.offset < size && entry.place.line > 0, "entries stand in the file");
        fuzz::require(entry.place.offset <= entry.behind && entry.behind <= size, "entries end in the file");
        fuzz::require(entry.endFrom != meant::End::Open || entry.end == entry.start, "an open end is the start");
        fuzz::require(entry.endFrom != meant::End::Next || entry.end > entry.start, "what ends an entry is later");
    }
}

bool areAlike(const std::vector<Entry>& a, const std::vector<Entry>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Entry& x, const Entry& y) {
        return x.start == y.start && x.end == y.end && x.endFrom == y.endFrom && x.text == y.text &&
               x.unseen == y.unseen && x.language == y.language && x.place.line == y.place.line;
    });
}

/// ASCII text says the same in 16 bits.
void requireSameInUtf16(std::string_view bytes, const meant::Options& options, const File& file) {
    const bool isText = std::all_of(bytes.begin(), bytes.end(), [](char c) { return meant::isAscii(c) && c != 0; });
    if (!isText || !hasReader(file.format)) return;
    std::string wide = "\xFF\xFE";
    for (const char c : bytes) wide += {c, '\0'};
    const File again = read(wide, options, {});
    fuzz::require(
        again.format == file.format && areAlike(file.entries, again.entries) && areAlike(file.unseen, again.unseen),
        "16-bit text is read as 8-bit text");
}

void read(fuzz::Input in) {
    const std::string_view bytes(reinterpret_cast<const char*>(in.data), in.size);
    fuzz::Choice choice(in);
    meant::Options options;
    options.ending = kEndings[choice.below(std::size(kEndings))];
    if (choice.oneIn(4)) options.rateThousandths = 1 + choice.below(1000000);
    const File file = read(bytes, options, {});
    fuzz::require(hasReader(file.format) || file.entries.empty(), "entries are those of a format that has a reader");
    fuzz::require((file.format == meant::Format::None) == !file.nature.empty(),
                  "what is no subtitle file is something else");
    requireEntries(file.entries, in.size);
    requireEntries(file.unseen, in.size);
    for (const meant::Place& place : file.strayLines)
        fuzz::require(place.offset < in.size, "stray lines stand in the file");
    requireSameInUtf16(bytes, options, file);
}

}  // namespace

const std::vector<fuzz::Driver> fuzz::drivers = {{"read", read, fuzz::mutateText}};
