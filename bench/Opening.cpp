// Opening a film from its path: construction and `BeginParse`, which reads the file and waits for the scan.
#include "bench/ByHand.h"
#include "bench/Formats.h"
#include "bench/General.h"
#include "bench/Table.h"
#include "tests/support/Interpose.h"

namespace bench {

namespace {

constexpr size_t kFilm = 90000;

using File = std::shared_ptr<test::TempFile>;

/// `open(path)` answers whether it worked.
template <class Open>
Measure opening(const File& file, Open open) {
    return medianWallUs([=] {
        if (!open(file->path())) fail("a film did not open");
    });
}

Measure ours(const Format& format, const File& file) {
    return opening(file, [&format](const char* path) {
        std::string own = path;
        const auto parser = format.onPath(own.data());
        return parser->BeginParse() == TRUE && parser->GetTagNum() != 0;
    });
}

Measure byHand(const Format& format, const File& file) {
    const ScanByHand scan = scanByHand(format.name);
    if (scan == nullptr) return nullptr;
    return opening(file, [scan](const char* path) { return openByHand(path, scan) != 0; });
}

Measure general(const Format& format, const File& file) {
    if (!avInstalled()) return notInstalled();
    const AvOpen open = avOpen(format.name);
    if (!open) return nullptr;
    return opening(file, [open](const char* path) { return open(path) != 0; });
}

}  // namespace

void registerOpening() {
    begin({"Opening a film of 90 KB, wall time", "µs", Better::kLower, {"by hand", "libavformat"}});
    for (const Format& format : formats) {
        add(format.name, [&format]() -> std::vector<Measure> {
            const auto file = std::make_shared<test::TempFile>(encode(format, kEightBit, kFilm));
            return {ours(format, file), byHand(format, file), general(format, file)};
        });
    }
}

}  // namespace bench
