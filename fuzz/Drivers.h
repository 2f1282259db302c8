/// The two ways in which fuzz targets drive a parser, and what both then ask of it.
///
/// A target is a file that defines `fuzz::drivers`; for a parser of one text file that is one line (and CMake writes it
/// for the dialects of .sub):
///
///     const std::vector<fuzz::Driver> fuzz::drivers = fuzz::bothDrivers<android::SubtitleParserSRT>();
///
/// The same file becomes `fuzz_<name>` (libFuzzer) and `replay_<name>` (a plain program). Both run every input through
/// all drivers; --driver=NAME chooses one, --drivers lists them.
#pragma once

#include <iterator>
#include <memory>
#include <optional>
#include <vector>

#include "fuzz/Mutations.h"
#include "subtitle/parser/TextParser.h"
#include "tests/support/Interpose.h"

namespace fuzz {

using namespace android;

struct Input {
    const U8* data;
    size_t size;
};

/// One way of driving a target. It ends the process when something is wrong: by a sanitizer or by `require`.
struct Driver {
    const char* name;
    void (*run)(Input);
    Mutate* mutate = nullptr;  ///< knows how such inputs are built; null: bytes are changed blindly
};

/// What the target offers.
extern const std::vector<Driver> drivers;

/// Says what did not hold and aborts.
void require(bool holds, const char* what);

/// Whether every input is asked everything, as a replay does. A fuzzer has better use for its time: there an input is
/// asked a part, which a hash of its bytes tells.
extern bool askEverything;

/// What one input is asked: the same for the same bytes, and over a corpus everything.
class Choice {
public:
    explicit Choice(Input in);

    /// A number below `count`, which is not 0.
    U32 below(U32 count);

    /// True for one of so many inputs; for all of them when everything is asked.
    bool oneIn(U32 count) { return below(count) == 0 || askEverything; }

    /// Calls `use` with each of the values when everything is asked, with `some` of them otherwise.
    template <class Values, class Use>
    void each(const Values& values, U32 some, Use use) {
        const U32 count = static_cast<U32>(std::size(values));
        if (askEverything || some >= count) {
            for (const auto& value : values) use(value);
        } else {
            for (U32 i = 0; i < some; ++i) use(values[below(count)]);
        }
    }

private:
    U64 mState;
};

/// A nameless file with the input as its content. The files themselves are kept and written anew.
class File {
public:
    explicit File(Input in);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int fd() const { return mFd; }  ///< at offset 0; not to be used any more at the end
    char* path() { return mPath; }

private:
    int mFd;
    char mPath[32];
};

/// Memory of exactly `size` bytes, filled with `fill`: a sanitizer sees the first byte too far, behind a size of 0 too,
/// and without one a byte that was written there is seen at the end. Blocks end in the opposite order of their
/// beginning; small ones cost no allocation.
class Block {
public:
    Block(U32 size, U8 fill);
    ~Block();
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    U8* data() const { return mData; }
    U32 size() const { return mSize; }

private:
    std::unique_ptr<U8[]> mMemory;  ///< of a large one
    U8* mData;
    U32 mSize;
};

/// The widest step over what a scan has not looked at, bytes: a SubRip time line of 16-bit units (29), and one more
/// unit for an odd last byte. No position lies further behind the data than that.
constexpr S64 kWidestStep = (29 + 1) * 2;

/// Requires of every tag that its position is not negative, and not behind the data but for the widest step.
void checkPositions(const SubtitleParser& parser);

/// All that a player may ask about a track: what it is, which entry covers a time (around the starts of some
/// entries, and at both ends), times and texts of some entries from either end and around count and capacity, each
/// text in buffers of many sizes. The number of entries looked at is bounded, and the choice has the last word.
void ask(SubtitleParser& parser, Choice& choice, U32 track = 0);

/// `ask` in the device's own language or, when the input has bytes above 0x7F, in Big5, or in both.
void askInSomeLanguage(SubtitleParser& parser, Input in, Choice& choice);

/// How a worker and whoever waits for it come after each other: mostly the worker ends first, so that nobody waits out
/// a period; for some inputs as it happens.
class ThreadOrder {
public:
    explicit ThreadOrder(Choice& choice);

private:
    std::optional<test::ThreadsEndFirst> mWorkersEndFirst;
};

/// The player's calls on a parser that was just constructed, up to its destruction. `tableOf` tells who holds the tags
/// of a parser that delegates; null: nobody does.
void play(std::unique_ptr<SubtitleParser> parser, Input in,
          const SubtitleParser* (*tableOf)(const SubtitleParser& parser) = nullptr);

/// Puts the input into the buffers of a parser that has none. False when memory is short.
bool load(SubtitleParser& parser, Input in);

/// Nothing may read behind the data while this lives, although the raw buffer goes on: parsers know their bounds.
class GuardClosed {
public:
    explicit GuardClosed(const SubtitleParser& parser);
    ~GuardClosed();
    GuardClosed(const GuardClosed&) = delete;
    GuardClosed& operator=(const GuardClosed&) = delete;

private:
    const U8* mBegin;
    size_t mSize;
};

/// The operation that reads through a bare pointer, at the start of the data and around its end.
void readNumbersAtEnds(SubtitleParser& parser);

/// The scan on the calling thread, in buffers that hold exactly the input; no file, no worker. Acceptance tests are
/// left out: the scan has to bear whatever it gets; `onDescriptor` has them. What a format settles between loading and
/// accepting is done.
template <class Parser>
void inMemory(Input in) {
    Parser parser(-1, 0, 0);
    if (!load(parser, in)) return;
    Choice choice(in);
    {
        const GuardClosed closed(parser);
        vxsubtitle::prepareScan(parser, vxsubtitle::formatOf<Parser>());
        parser.ParserThread();
        checkPositions(parser);
        askInSomeLanguage(parser, in, choice);
    }
    readNumbersAtEnds(parser);
}

/// The player's whole calling order on a descriptor.
template <class Parser>
void onDescriptor(Input in) {
    const File file(in);
    play(std::make_unique<Parser>(file.fd(), 0, static_cast<S64>(in.size)), in);
}

template <class Parser>
std::vector<Driver> bothDrivers() {
    return {{"memory", inMemory<Parser>, mutateText}, {"player", onDescriptor<Parser>, mutateText}};
}

/// Takes --driver=NAME out of the arguments; ends the program for --drivers and for a name that there is not.
void chooseDriver(int* argc, char** argv);

/// The chosen driver, or all of them.
std::vector<Driver> chosenDrivers();

}  // namespace fuzz
