// vxsub play: entries come and go as they would on a television.
#include <locale.h>
#include <stdio.h>

#include <algorithm>

#include "Commands.h"
#include "PlayClock.h"
#include "Screen.h"
#include "Text.h"
#include "Time.h"
#include "Viewer.h"

namespace vxsub {
namespace {

using namespace android;

constexpr double kFrameSeconds = 0.04;
constexpr size_t kMostTextLines = 8;
constexpr U32 kOpenEndMs = 5000;  // how long the last entry is played that has no end of its own

/// Every play time at which what is shown can change.
std::vector<U32> boundariesOf(SubtitleFile& file) {
    std::vector<U32> times;
    for (const Entry& entry : file.trackEntries()) {
        times.push_back(entry.start);
        const U32 most = Entry::kOpenEnd - entry.start;
        times.push_back(entry.isOpen() ? entry.start + std::min(kOpenEndMs, most) : entry.end);
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

/// For files and pipes: a line for each change, at its time.
void playLines(SubtitleFile& file, Output& out, PlayClock clock, U32 fromMs, const std::vector<U32>& times) {
    Viewer viewer(file);
    std::optional<U32> before;
    const auto tell = [&](U32 ms) {
        const std::optional<U32> shown = file.entryShownAt(ms);
        if (shown == before) return;
        before = shown;
        const std::string text = shown ? escapeLine(viewer.text(*shown)) : "";
        out.line(formatTime(ms) + "  " + (shown ? "entry " + std::to_string(*shown) : "nothing is shown") +
                 (text.empty() ? "" : "  " + text));
        out.flush();
    };
    tell(fromMs);
    for (auto next = std::upper_bound(times.begin(), times.end(), fromMs); next != times.end(); ++next) {
        clock.waitUntil(*next, out);
        tell(*next);
    }
}

/// For a terminal: the text in the middle of some lines, and a progress line below.
class Stage {
public:
    Stage(SubtitleFile& file, Screen& screen, U32 endMs) : mFile(file), mViewer(file), mScreen(screen), mEndMs(endMs) {}

    void draw(U32 ms, bool isPaused) {
        const Screen::Size size = mScreen.size();
        if (size.columns != mColumns || size.rows != mRows) fit(size);
        const std::optional<U32> shown = mFile.entryShownAt(ms);
        std::vector<std::string> text;
        if (shown) text = textOf(*shown);
        std::vector<std::string> lines(mTextLines - text.size());  // above, as on a television
        for (const std::string& line : text)
            lines.push_back(std::string((mColumns - 1 - displayWidth(line)) / 2, ' ') + line);
        if (mRows > mTextLines + 2) lines.emplace_back();
        lines.push_back(progressLine(ms, isPaused ? "paused" : shown ? "entry " + std::to_string(*shown) : ""));
        mScreen.draw(lines);
    }

private:
    /// As many lines as the longest text needs, as far as they fit.
    void fit(const Screen::Size& size) {
        mColumns = std::max<size_t>(size.columns, 2);
        mRows = size.rows;
        mTextLines = 1;
        const size_t most = std::min(kMostTextLines, mRows > 4 ? mRows - 3 : 1);
        if (mFile.hasPictures()) return;
        for (U32 i = 0; i < mFile.count() && mTextLines < most; ++i)
            mTextLines = std::max(mTextLines, displayLines(mFile.text(i), mColumns - 1).size());
        mTextLines = std::min(mTextLines, most);
    }

    std::vector<std::string> textOf(U32 index) {
        if (mIndex != index) mText = mViewer.text(index);  // a picture is drawn once
        mIndex = index;
        std::vector<std::string> lines = displayLines(mText, mColumns - 1);
        if (lines.size() > mTextLines) {
            lines.resize(mTextLines);
            lines.back() = "...";
        }
        for (std::string& line : lines)
            if (displayWidth(line) >= mColumns) line = "?";  // one character wider than the terminal
        return lines;
    }

    std::string progressLine(U32 ms, const std::string& state) const {
        const std::string left = formatTime(ms) + " ";
        const std::string right = " " + formatTime(mEndMs) + "  " + state;
        constexpr size_t kEntryWidth = 32;  // of `right`, so that the bar keeps its width
        const size_t room = mColumns - 1;
        if (room < left.size() + kEntryWidth + 12) return left.substr(0, room);
        const size_t bar = room - left.size() - kEntryWidth - 2;
        const size_t done = mEndMs == 0 ? bar : size_t(double(bar) * ms / mEndMs);
        return left + "[" + std::string(done, '#') + std::string(bar - done, '-') + "]" + right;
    }

    SubtitleFile& mFile;
    Viewer mViewer;
    Screen& mScreen;
    U32 mEndMs;
    std::optional<U32> mIndex;  ///< whose text `mText` is
    std::u32string mText;
    size_t mColumns = 0, mRows = 0, mTextLines = 1;
};

/// Where an arrow leads from `now`.
double jump(Key key, double now, U32 endMs) {
    const double seconds = key == Key::Left ? -5 : key == Key::Right ? 5 : key == Key::Down ? -60 : 60;
    return std::clamp(now + seconds * 1000, 0.0, double(endMs));
}

void playOnTerminal(SubtitleFile& file, Output& out, PlayClock clock, U32 endMs) {
    setlocale(LC_CTYPE, "C.UTF-8");  // for the widths of characters
    Screen screen(out, Screen::Keys::Taken);
    Stage stage(file, screen, endMs);
    bool isPaused = false;
    for (;;) {
        const double now = std::min(clock.now(), double(endMs));
        stage.draw(U32(now), isPaused);
        if (now >= endMs && !isPaused) return;
        const Key key =
            screen.waitForKey(isPaused ? kFrameSeconds : std::min(kFrameSeconds, clock.secondsUntil(endMs)));
        if (key == Key::Quit) return;
        const bool stoodStill = screen.wasStopped() || isPaused;
        if (key == Key::Space) isPaused = !isPaused;
        if (key >= Key::Left)
            clock.set(jump(key, now, endMs));
        else if (stoodStill)
            clock.set(now);
    }
}

std::string titleOf(SubtitleFile& file, double speed) {
    char times[32] = "";
    if (speed != 1) snprintf(times, sizeof times, ", %.6g times as fast", speed);
    const std::string& path = file.path();
    const size_t entries = file.trackEntries().size();
    return printable(path.substr(path.rfind('/') + 1)) + ": " + nameOf(file.type()).phrase + ", " +
           std::to_string(entries) + (entries == 1 ? " entry" : " entries") + times;
}

void play(const OpenOptions& options, U32 fromMs, double speed, Output& out) {
    SubtitleFile file(options);
    const std::vector<U32> times = boundariesOf(file);
    if (times.empty() || fromMs >= times.back()) {
        out.line(printable(file.path()) + ": " +
                 (times.empty() ? "no entries" : "nothing is shown from " + formatTime(fromMs) + " on"));
        return;
    }
    const PlayClock clock(fromMs, speed);
    if (canRedraw(out)) {
        out.line(titleOf(file, speed));
        if (Screen::hasKeys()) out.line("space halts, left and right go 5 seconds, down and up a minute, q ends");
        playOnTerminal(file, out, clock, times.back());
    } else {
        playLines(file, out, clock, fromMs, times);
    }
}

}  // namespace

void addPlay(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("play", "Play the entries against a clock");
    command->footer(std::string("TIME is written as ") + kTimeForms +
                    ".\n\n"
                    "On a terminal, entries come and go above a line with the play time. There, space\n"
                    "halts and goes on, left and right go back and forth by 5 seconds, down and up by\n"
                    "a minute, and q ends it. When the output is a file or a pipe, each change is one\n"
                    "line, written at its time.\n\n"
                    "Examples:  vxsub play movie.srt --speed 8\n"
                    "           vxsub play movie.srt --from 00:42:00");
    addFileArgument(*command, session);
    const auto speed = std::make_shared<double>(1);
    const auto from = std::make_shared<U32>(0);
    addSpeedOption(*command, speed.get());
    addTrackOption(*command, session, "the track of a file that has several; 0 when not given");
    command->add_option_function<std::string>("--from", timeInto(from.get(), "--from"), "begin at this play time")
        ->type_name("TIME");
    command->callback([speed, from, &session] {
        session.run = [speed, from, &session] { play(session.file, *from, *speed, session.out); };
    });
}

}  // namespace vxsub
