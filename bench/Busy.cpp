// A busy machine: a film is opened a thousand times while twice as many busy loops run as there are processors to run
// them, by the parser, whose worker has to get its turn, and by a plain function on the calling thread. Fails when the
// parser waits for its poll, or much longer than the plain function.
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "bench/ByHand.h"
#include "bench/Formats.h"
#include "bench/Table.h"
#include "tests/support/Interpose.h"

namespace bench {

namespace {

constexpr size_t kFilm = 60000;
constexpr int kOpenings = 1000;
constexpr int kProcessors = 2;
constexpr int kLoops = 4;
constexpr double kPause = 2;  // milliseconds between two openings: a player is no busy loop itself

constexpr double kLongest = 50;     // milliseconds that no opening may take
constexpr double kMostBehind = 15;  // the slowest hundredth against that of the plain function

/// Leaves the process, and what it starts, two processors.
void takeTwoProcessors() {
    cpu_set_t all, few;
    CPU_ZERO(&few);
    sched_getaffinity(0, sizeof all, &all);
    for (size_t i = 0; i < CPU_SETSIZE && CPU_COUNT(&few) < kProcessors; ++i) {
        if (CPU_ISSET(i, &all)) CPU_SET(i, &few);
    }
    sched_setaffinity(0, sizeof few, &few);
}

/// Processes that do nothing but use time, until this ends.
class BusyLoops {
public:
    BusyLoops() {
        for (pid_t& loop : mLoops) {
            loop = fork();
            if (loop != 0) continue;
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            for (volatile unsigned turns = 0;; turns = turns + 1) {
            }
        }
    }
    ~BusyLoops() {
        for (const pid_t loop : mLoops) {
            if (loop <= 0) continue;
            kill(loop, SIGKILL);
            waitpid(loop, nullptr, 0);
        }
    }
    BusyLoops(const BusyLoops&) = delete;
    BusyLoops& operator=(const BusyLoops&) = delete;

private:
    pid_t mLoops[kLoops] = {};
};

/// What a row of the table shows, milliseconds.
struct Figures {
    explicit Figures(std::vector<double> ms) {
        std::sort(ms.begin(), ms.end());
        middle = ms[ms.size() / 2];
        slowest = ms[ms.size() * 99 / 100];
        longest = ms.back();
        atPeriod = std::count_if(ms.begin(), ms.end(), [](double t) { return t >= 95 && t <= 105; });
        tooLong = std::count_if(ms.begin(), ms.end(), [](double t) { return t > kLongest; });
    }
    void print(const char* title) const {
        printf("| %s | %.2f | %.2f | %.2f | %td | %td |\n", title, middle, slowest, longest, atPeriod, tooLong);
    }

    double middle, slowest, longest;
    std::ptrdiff_t atPeriod, tooLong;
};

template <class Open>
double opened(Open open) {
    usleep(static_cast<useconds_t>(kPause * 1000));
    return wallNs([&] {
               if (!open()) fail("the film did not open");
           }) /
           1e6;
}

/// Whether the parser keeps to its bounds.
bool measure() {
    const Format& srt = formatNamed("SRT");
    const test::TempFile film(srt.film(kFilm));
    const ScanByHand scan = scanByHand(srt.name);
    std::vector<double> parser, plain;
    const BusyLoops loops;
    for (int i = 0; i < kOpenings; ++i) {
        parser.push_back(opened([&] {
            std::string path = film.path();
            const auto opening = srt.onPath(path.data());
            return opening->BeginParse() == TRUE && opening->GetTagNum() != 0;
        }));
        plain.push_back(opened([&] { return openByHand(film.path(), scan) != 0; }));
    }
    printf("| ms | median | 99 of 100 | longest | at the poll's period | above %.0f ms |\n", kLongest);
    printf("|---|---:|---:|---:|---:|---:|\n");
    const Figures ours(parser), byHand(plain);
    ours.print("`BeginParse`");
    byHand.print("a plain function");
    return ours.atPeriod == 0 && ours.tooLong == 0 && ours.slowest <= byHand.slowest + kMostBehind;
}

}  // namespace

}  // namespace bench

int main() {
    bench::takeTwoProcessors();
    if (bench::measure()) return 0;
    fprintf(stderr, "busy: the parser waits too long\n");
    return 1;
}
