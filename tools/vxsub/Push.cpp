// vxsub push: a text file's entries as pushed subtitles, and what the queue answers.
#include <algorithm>

#include "Commands.h"
#include "Errors.h"
#include "PlayClock.h"
#include "Text.h"
#include "Time.h"
#include "subtitle/SubtitleParserInternal.h"

namespace vxsub {
namespace {

using namespace android;

constexpr U32 kAheadMs = 1000;  // how long before its start a text comes out of the movie
constexpr U32 kNoTag = 0xFFFFFFFF;
constexpr size_t kLongestText = 16384;

struct PushOptions {
    double speed = 1;
    std::optional<U32> jumpMs;
};

struct Text {
    U32 index;
    Entry entry;
    std::string utf8;
};

/// The entries in the order in which they stand in a movie.
std::vector<Text> textsOf(SubtitleFile& file) {
    std::vector<Text> texts;
    for (U32 i = 0; i < file.count(); ++i) texts.push_back({i, file.entry(i), encodeUtf8(file.text(i))});
    std::stable_sort(texts.begin(), texts.end(),
                     [](const Text& a, const Text& b) { return a.entry.start < b.entry.start; });
    return texts;
}

U32 pushTimeOf(const Text& text) { return text.entry.start - std::min(text.entry.start, kAheadMs); }

/// A movie that pushes its texts, and a player that asks for them.
class Replay {
public:
    Replay(const std::vector<Text>& texts, double speed, Output& out) : mTexts(texts), mOut(out), mClock(0, speed) {
        for (const Text& text : texts) {
            mTimes.push_back(pushTimeOf(text));
            mTimes.push_back(text.entry.start);
            mTimes.push_back(text.entry.end);
        }
        std::sort(mTimes.begin(), mTimes.end());
        mTimes.erase(std::unique(mTimes.begin(), mTimes.end()), mTimes.end());
    }

    /// Plays until that time, or to the end.
    void playUntil(std::optional<U32> endMs) {
        for (const U32 ms : mTimes) {
            if (endMs && ms >= *endMs) break;
            mClock.waitUntil(ms, mOut);
            pushAll(ms);
            ask(ms);
        }
        if (!endMs) return;
        mClock.waitUntil(*endMs, mOut);
        ask(*endMs);
    }

    void jumpToTheStart(U32 fromMs) {
        tell(fromMs, "jump", "to " + formatTime(0));
        mClock.set(0);
        mNext = 0;
        mHasJumped = true;
        ask(0);
    }

private:
    void pushAll(U32 ms) {
        for (; mNext < mTexts.size() && pushTimeOf(mTexts[mNext]) <= ms; ++mNext) {
            const Text& text = mTexts[mNext];
            const size_t before = queued();
            const bool pushed = mQueue.AddSubtitleText(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8, ms, text.utf8.data(),
                                                       U32(text.utf8.size()), text.entry.start, text.entry.end) == TRUE;
            if (!pushed) throw FileError("the queue has no memory for entry " + std::to_string(text.index));
            const size_t dropped = before + 1 - queued();
            tell(ms, "push",
                 "entry " + std::to_string(text.index) + " (" + formatSpan(text.entry) + "), " +
                     std::to_string(queued()) + " queued" +
                     (dropped > 0 ? ", " + std::to_string(dropped) + " dropped" : "") +
                     (mHasJumped ? ": the time has gone back" : ""));
            mHasJumped = false;
        }
    }

    /// Says what the queue answers, when that is something else than before.
    void ask(U32 ms) {
        const U32 tag = mQueue.GetTag(0, ms);
        std::string answer = "nothing";
        if (tag != kNoTag) {
            std::string text(kLongestText, '\0');
            text.resize(mQueue.GetData(0, reinterpret_cast<U8*>(&text[0]), U32(text.size()), tag));
            ST_MEDIA_SUBTITLE_PARSER_TAG times = {};
            mQueue.GetTagInfo(0, tag, &times);
            answer = "tag " + std::to_string(tag) + " (until " + formatTime(times.u32TimeEnd) + ")  " + printable(text);
        }
        if (answer == mAnswer) return;
        mAnswer = answer;
        tell(ms, "show", answer);
    }

    void tell(U32 ms, const char* what, const std::string& words) {
        mOut.line(formatTime(ms) + "  " + what + "  " + words);
        mOut.flush();
    }

    size_t queued() const { return mQueue.m_vSubtitleInfo.size(); }

    const std::vector<Text>& mTexts;
    Output& mOut;
    PlayClock mClock;
    SubtitleParserInternal mQueue;
    std::vector<U32> mTimes;
    size_t mNext = 0;
    bool mHasJumped = false;  ///< since the last push
    std::string mAnswer = "nothing";
};

void push(const OpenOptions& open, const PushOptions& options, Output& out) {
    SubtitleFile file(open);
    if (file.hasPictures()) throw FileError(file.path() + ": has pictures; only texts can be pushed");
    const std::vector<Text> texts = textsOf(file);
    if (texts.empty()) {
        out.line(printable(file.path()) + ": no entries");
        return;
    }
    Replay replay(texts, options.speed, out);
    if (options.jumpMs) {
        replay.playUntil(options.jumpMs);
        replay.jumpToTheStart(*options.jumpMs);
    }
    replay.playUntil(std::nullopt);
}

}  // namespace

void addPush(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("push", "Replay a text file as subtitles from inside a movie");
    command->footer(std::string("TIME is written as ") + kTimeForms +
                    ".\n\n"
                    "Each entry is pushed into the library's queue one second before its start, as\n"
                    "UTF-8; then the queue is asked what to show. Each push and each new answer is\n"
                    "one line, written at its play time:\n"
                    "  push  the entry, how many are queued now, how many the queue dropped meanwhile\n"
                    "  show  the queue's tag (the start in milliseconds), end and text, or nothing\n"
                    "The queue drops what has ended, and everything when the play time goes back.\n\n"
                    "Examples:  vxsub push movie.srt --speed 20\n"
                    "           vxsub push movie.srt --speed 20 --jump 1:00");
    addFileArgument(*command, session);
    const auto options = std::make_shared<PushOptions>();
    const auto jump = std::make_shared<U32>(0);
    addSpeedOption(*command, &options->speed);
    command
        ->add_option_function<std::string>(
            "--jump",
            [options, jump](const std::string& text) {
                timeInto(jump.get(), "--jump")(text);
                options->jumpMs = *jump;
            },
            "at this play time, jump back to the start once")
        ->type_name("TIME");
    command->callback(
        [options, &session] { session.run = [options, &session] { push(session.file, *options, session.out); }; });
}

}  // namespace vxsub
