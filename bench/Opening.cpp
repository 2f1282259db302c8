// Opening a film from its path: construction and `BeginParse`, which reads the file and waits for the scan.
#include <pthread.h>

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

/// A thread like a parser's worker, with nothing to do.
void startAndJoin() {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 65536);
    pthread_t thread;
    const auto nothing = [](void*) -> void* { return nullptr; };
    if (pthread_create(&thread, &attributes, nothing, nullptr) != 0) fail("no thread");
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

/// By hand, and a thread: what a parser cannot do without.
Measure byHandAndAThread(const Format& format, const File& file) {
    const ScanByHand scan = scanByHand(format.name);
    if (scan == nullptr) return nullptr;
    return opening(file, [scan](const char* path) {
        const size_t tags = openByHand(path, scan);
        startAndJoin();
        return tags != 0;
    });
}

Measure general(const Format& format, const File& file) {
    if (!avInstalled()) return notInstalled();
    const AvOpen open = avOpen(format.name);
    if (!open) return nullptr;
    return opening(file, [open](const char* path) { return open(path) != 0; });
}

}  // namespace

void registerOpening() {
    begin({"Opening a film of 90 KB, wall time", "µs", Better::kLower, {"by hand", "and a thread", "libavformat"}});
    for (const Format& format : formats) {
        add(format.name, [&format]() -> std::vector<Measure> {
            const auto file = std::make_shared<test::TempFile>(encode(format, kEightBit, kFilm));
            return {ours(format, file), byHand(format, file), byHandAndAThread(format, file), general(format, file)};
        });
    }
}

}  // namespace bench
