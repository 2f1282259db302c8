// Scans: from bytes in memory to the tag table, growth of the table included.
#include <string.h>

#include "bench/ByHand.h"
#include "bench/Formats.h"
#include "bench/General.h"
#include "bench/Table.h"

namespace bench {

namespace {

constexpr size_t kFilm = 32 << 20;
constexpr size_t kShortFilm = 2 << 20;  // for what takes a second and more for the long one

/// A film, for several ways.
using Film = std::shared_ptr<std::string>;

Film filmOf(const Format& format, Encoding encoding, size_t size = kFilm) {
    return std::make_shared<std::string>(encode(format, encoding, size));
}

/// Measures the second of two runs: the table of the first one leaves memory that need not come from the system,
/// whatever the way before left.
template <class Run>
double secondOf(Run run) {
    run();
    return run();
}

double megabytesPerSecond(const Film& film, double ns) { return static_cast<double>(film->size()) * 1e3 / ns; }

Measure ours(const Format& format, const Film& film) {
    return [&format, film] {
        return megabytesPerSecond(film, secondOf([&] {
                                      const auto parser = load(format, *film);
                                      const double ns = cpuNs([&] { format.scan(*parser); });
                                      if (parser->GetTagNum() < film->size() / 400)
                                          fail(std::string(format.name) + ": entries are missing");
                                      return ns;
                                  }));
    };
}

bool sameTags(const Tags& tags, const SubtitleParser& parser) {
    const auto same = [](const ST_MEDIA_SUBTITLE_PARSER_TAG& a, const ST_MEDIA_SUBTITLE_PARSER_TAG& b) {
        return a.u32TimeStart == b.u32TimeStart && a.u32TimeEnd == b.u32TimeEnd && a.s64Pos == b.s64Pos;
    };
    return tags.count() == parser.m_u32TagNum && std::equal(tags.begin(), tags.end(), parser.m_pTagBuffer, same);
}

Measure byHand(const Format& format, const Film& film) {
    const ScanByHand scan = scanByHand(format.name);
    if (scan == nullptr) return nullptr;
    const auto into = [scan, film](Tags* tags) { scan(film->data(), film->data() + film->size(), tags); };
    Tags tags;
    into(&tags);
    if (!sameTags(tags, *loadAndScan(format, *film))) fail(std::string(format.name) + " by hand: other tags");
    return [film, into] {
        return megabytesPerSecond(film, secondOf([&] {
                                      Tags fresh;
                                      return cpuNs([&] { into(&fresh); });
                                  }));
    };
}

Measure general(const Format& format) {
    if (!avInstalled()) return notInstalled();
    const AvScan scan = avScan(format.name);
    if (!scan) return nullptr;
    return [scan, film = filmOf(format, kEightBit, kShortFilm), &format] {
        size_t packets = 0;
        const double ns = cpuNs([&] { packets = scan(*film); });
        if (packets < film->size() / 400) fail(std::string(format.name) + ": libavformat misses entries");
        return megabytesPerSecond(film, ns);
    };
}

Measure lineEnds(const Film& film) {
    return [film] {
        size_t lines = 0;
        const double ns = cpuNs([&] {
            const char* const end = film->data() + film->size();
            for (const char* p = film->data(); p != end; ++lines) {
                const void* const found = memchr(p, '\n', static_cast<size_t>(end - p));
                p = found == nullptr ? end : static_cast<const char*>(found) + 1;
            }
        });
        keep(lines);
        return megabytesPerSecond(film, ns);
    };
}

Measure assEvents(const Film& film) {
    if (!assInstalled()) return notInstalled();
    return [film, scan = assScan()] {
        size_t events = 0;
        const double ns = cpuNs([&] { events = scan(*film); });
        if (events < film->size() / 400) fail("libass misses entries");
        return megabytesPerSecond(film, ns);
    };
}

}  // namespace

void registerScan() {
    begin({"Scan of 32 MiB, 8-bit", "MB/s", Better::kHigher, {"by hand", "memchr", "libavformat"}});
    for (const Format& format : formats) {
        add(format.name, [&format]() -> std::vector<Measure> {
            const Film film = filmOf(format, kEightBit);
            return {ours(format, film), byHand(format, film), lineEnds(film), general(format)};
        });
    }
    begin({"Scan of 2 MiB of SSA", "MB/s", Better::kHigher, {"libass"}});
    add("SSA", []() -> std::vector<Measure> {
        const Format& ssa = formatNamed("SSA");
        const Film film = filmOf(ssa, kEightBit, kShortFilm);
        film->insert(0, "[Script Info]\r\nScriptType: v4.00+\r\n\r\n");  // libass asks for it
        return {ours(ssa, film), assEvents(film)};
    });
    begin({"Scan of 32 MiB, UTF-16", "MB/s", Better::kHigher, {"8-bit"}});
    for (const Format& format : formats) {
        for (const auto& [encoding, name] : wideEncodings) {
            if (!reads(format, encoding)) continue;
            add(format.name + std::string(", ") + name, [&format, e = encoding]() -> std::vector<Measure> {
                const Film film = filmOf(format, e);
                return {ours(format, film), ours(format, filmOf(format, kEightBit))};
            });
        }
    }
}

}  // namespace bench
