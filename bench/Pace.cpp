// The pace of a machine that only proportions can be had of, as one that is emulated: scans and texts against a sum of
// the same bytes.
#include <unistd.h>

#include "bench/Formats.h"
#include "bench/Table.h"

namespace bench {

namespace {

constexpr size_t kFilm = 256 << 10;

struct Scanned {
    Scanned(const Format& format, Encoding encoding) : film(encode(format, encoding, kFilm)) {}

    std::string film;
    std::unique_ptr<SubtitleParser> parser;
};
using Shared = std::shared_ptr<Scanned>;

double kilobytes(const Shared& scanned) { return static_cast<double>(scanned->film.size()) / 1000; }

Measure sum(const Shared& scanned) {
    return [scanned] {
        return cpuNsEach(kilobytes(scanned), [&] {
            unsigned total = 0;
            for (const char c : scanned->film) {
                total += static_cast<unsigned char>(c);
                keep(total);  // one byte at a time
            }
        });
    };
}

Measure scan(const Format& format, const Shared& scanned) {
    return [&format, scanned] {
        scanned->parser = load(format, scanned->film);
        return cpuNs([&] { format.scan(*scanned->parser); }) / kilobytes(scanned);
    };
}

Measure texts(const Format& format, const Shared& scanned) {
    scanned->parser = loadAndScan(format, scanned->film);
    return [scanned] {
        const U32 count = scanned->parser->GetTagNum();
        return cpuNsEach(kilobytes(scanned), [&] {
            static U8 text[8192];
            for (U32 i = 0; i < count; ++i) scanned->parser->GetData(0, text, sizeof text, i);
        });
    };
}

template <class Work>
void addFormats(const char* title, Work work) {
    begin({title, "ns a KB", Better::kLower, {"sum of bytes"}});
    for (const Format& format : formats) {
        for (const auto& [encoding, name] : encodings) {
            if (!reads(format, encoding)) continue;
            add(format.name + std::string(", ") + name, [&format, work, e = encoding]() -> std::vector<Measure> {
                const auto scanned = std::make_shared<Scanned>(format, e);
                return {work(format, scanned), sum(scanned)};
            });
        }
    }
}

}  // namespace

}  // namespace bench

int main() {
    FILE* const out = fdopen(dup(STDOUT_FILENO), "w");
    if (out == nullptr || freopen("/dev/null", "w", stdout) == nullptr) return 1;
    bench::addFormats("Scan", bench::scan);
    bench::addFormats("Texts of all entries", bench::texts);
    bench::run(out, "");
    return 0;
}
