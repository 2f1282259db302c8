// What opening a file adds to the process at its highest.
#include <malloc.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "bench/ByHand.h"
#include "bench/Formats.h"
#include "bench/General.h"
#include "bench/Table.h"
#include "tests/support/Interpose.h"

namespace bench {

namespace {

using File = std::shared_ptr<test::TempFile>;

/// A line of /proc/self/status, in kibibytes.
double statusOf(const char* key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, strlen(key), key) == 0) return std::stod(line.substr(strlen(key) + 1));
    }
    return 0;
}

/// In a process of its own, so that what `open` leaves behind is gone for the next one.
template <class Open>
Measure highest(Open open) {
    return [=] {
        int ends[2];
        if (pipe(ends) != 0) fail("no pipe");
        const pid_t child = fork();
        if (child == 0) {
            open();  // what only the first one touches is not counted
            malloc_trim(0);
            std::ofstream("/proc/self/clear_refs") << "5\n";  // the highest so far is what is in use now
            const double before = statusOf("VmRSS:");
            open();
            const double added = statusOf("VmHWM:") - before;
            _exit(write(ends[1], &added, sizeof added) == sizeof added ? 0 : 1);
        }
        close(ends[1]);
        double added = 0;
        if (read(ends[0], &added, sizeof added) != sizeof added) fail("a film did not open");
        close(ends[0]);
        waitpid(child, nullptr, 0);
        return added;
    };
}

Measure ours(const Format& format, const File& file) {
    return highest([&format, file] {
        std::string path = file->path();
        const auto parser = format.onPath(path.data());
        if (parser->BeginParse() != TRUE) _exit(1);
    });
}

Measure byHand(const Format& format, const File& file) {
    const ScanByHand scan = scanByHand(format.name);
    if (scan == nullptr) return nullptr;
    return highest([scan, file] { openByHand(file->path(), scan); });
}

Measure general(const Format& format, const File& file) {
    if (!avInstalled()) return notInstalled();
    const AvOpen open = avOpen(format.name);
    if (!open) return nullptr;
    return highest([open, file] { open(file->path()); });
}

}  // namespace

void registerMemory() {
    begin({"Memory at its highest while a file is opened", "KiB", Better::kLower, {"by hand", "libavformat"}});
    add("SRT, 32 MiB", []() -> std::vector<Measure> {
        const Format& srt = formatNamed("SRT");
        const auto file = std::make_shared<test::TempFile>(encode(srt, kEightBit, 32 << 20));
        return {ours(srt, file), byHand(srt, file), general(srt, file)};
    });
}

}  // namespace bench
