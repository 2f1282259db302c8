// libass reads SSA into events.
#include "bench/General.h"

#ifdef BENCH_LIBASS

#include <ass/ass.h>

#include <memory>

namespace bench {

namespace {

struct ClosesLibrary {
    void operator()(ASS_Library* library) const { ass_library_done(library); }
};

}  // namespace

bool assInstalled() { return true; }

AssScan assScan() {
    const std::shared_ptr<ASS_Library> library(ass_library_init(), ClosesLibrary());
    ass_set_message_cb(
        library.get(), [](int, const char*, va_list, void*) {}, nullptr);
    return [library](std::string& data) {
        ASS_Track* const track = ass_read_memory(library.get(), data.data(), data.size(), nullptr);
        const size_t count = track != nullptr ? static_cast<size_t>(track->n_events) : 0;
        if (track != nullptr) ass_free_track(track);
        return count;
    };
}

}  // namespace bench

#else

namespace bench {

bool assInstalled() { return false; }
AssScan assScan() { return nullptr; }

}  // namespace bench

#endif
