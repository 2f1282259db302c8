#include "bench/Films.h"

#include <stdio.h>

#include <algorithm>
#include <random>

#include "tests/support/DialectFilm.h"

namespace bench {

namespace {

constexpr const char* kWords[] = {
    "the",  "harbour", "was", "empty", "when", "we",    "came",    "back", "and",     "nobody",
    "had",  "told",    "us",  "why",   "not",  "even",  "you,",    "my",   "friend.", "Listen:",
    "what", "did",     "she", "say?",  "I",    "never", "thought", "of",   "it",
};

std::string makeLine(std::minstd_rand& random, bool italic) {
    const size_t length = 18 + random() % 22;
    std::string line = italic ? "<i>" : "";
    while (line.size() < length) {
        if (!line.empty() && line.back() != '>') line += ' ';
        line += kWords[random() % (sizeof kWords / sizeof *kWords)];
    }
    return italic ? line + "</i>" : line;
}

std::string clock(U32 ms) {
    char text[32];
    snprintf(text, sizeof text, "%02u:%02u:%02u,%03u", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, ms % 1000);
    return text;
}

}  // namespace

std::string makeFilm(size_t size, const std::function<void(const Entry&, std::string*)>& write) {
    constexpr size_t kShortestEntry = 50;
    const U32 step = static_cast<U32>(std::min<size_t>(5000, 98 * 3600000UL / (size / kShortestEntry + 1)));
    std::minstd_rand random(1);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same film every time
    std::string film;
    film.reserve(size + 1024);
    for (U32 number = 1; film.size() < size; ++number) {
        const U32 start = number * step + static_cast<U32>(random() % (step / 4));
        Entry entry{number, start, start + step / 2, makeLine(random, number % 8 == 0), ""};
        if (number % 2 == 0) entry.secondLine = makeLine(random, false);
        write(entry, &film);
    }
    return film;
}

std::string srtFilm(size_t size) {
    return makeFilm(size, [](const Entry& entry, std::string* film) {
        *film += std::to_string(entry.number) + "\r\n";
        *film += clock(entry.startMs) + " --> " + clock(entry.endMs) + "\r\n" + entry.firstLine + "\r\n";
        if (!entry.secondLine.empty()) *film += entry.secondLine + "\r\n";
        *film += "\r\n";
    });
}

std::string ssaFilm(size_t size) {
    const auto time = [](U32 ms) {
        char text[32];
        snprintf(text, sizeof text, "%u:%02u:%02u.%02u", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, ms / 10 % 100);
        return std::string(text);
    };
    return "[Events]\r\n" + makeFilm(size, [&](const Entry& entry, std::string* film) {
               // ten times as fast as the film: hours have one digit
               *film += "Dialogue: 0," + time(entry.startMs / 10) + "," + time(entry.endMs / 10) + ",Default,,0,0,0,," +
                        entry.firstLine;
               if (!entry.secondLine.empty()) *film += "\\N" + entry.secondLine;
               *film += "\r\n";
           });
}

std::string smiFilm(size_t size) {
    return "<SAMI>\r\n<BODY>\r\n" + makeFilm(size, [](const Entry& entry, std::string* film) {
               *film += "<SYNC Start=" + std::to_string(entry.startMs) + "><P Class=ENCC>" + entry.firstLine;
               if (!entry.secondLine.empty()) *film += "<br>\r\n" + entry.secondLine;
               *film += "\r\n<SYNC Start=" + std::to_string(entry.endMs) + "><P Class=ENCC>&nbsp;\r\n";
           });
}

std::string txtFilm(size_t size) {
    const auto stamp = [](U32 ms, int line) { return clock(ms).substr(0, 8) + "," + std::to_string(line) + "="; };
    return makeFilm(size, [&](const Entry& entry, std::string* film) {
        *film +=
            stamp(entry.startMs, 1) + entry.firstLine + "\r\n" + stamp(entry.startMs, 2) + entry.secondLine + "\r\n";
        *film += stamp(entry.endMs, 1) + "\r\n" + stamp(entry.endMs, 2) + "\r\n";
    });
}

std::string dialectFilm(std::string_view pattern, size_t size) {
    // no file of ASCII alone: a dialect may take that for UTF-8
    return test::dialectEntry(pattern, 1000, 2000, "caf\xE9") +
           makeFilm(size, [pattern](const Entry& entry, std::string* film) {
               *film += test::dialectEntry(pattern, entry.startMs, entry.endMs, entry.firstLine);
           });
}

}  // namespace bench
