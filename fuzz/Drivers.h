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

#include <memory>
#include <vector>

#include "subtitle/parser/TextParser.h"

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
};

/// What the target offers.
extern const std::vector<Driver> drivers;

/// Says what did not hold and aborts.
void require(bool holds, const char* what);

/// A nameless file with the input as its content.
class File {
public:
    explicit File(Input in);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    int fd() const { return mFd; }  ///< at offset 0; closed at the end
    char* path() { return mPath; }

private:
    int mFd;
    char mPath[32];
};

/// Heap memory of exactly `size` bytes, filled with `fill`: a sanitizer sees the first byte too far, behind a size
/// of 0 too.
class Block {
public:
    Block(U32 size, U8 fill);
    U8* data() const { return mData; }
    U32 size() const { return mSize; }

private:
    std::unique_ptr<U8[]> mMemory;
    U8* mData;
    U32 mSize;
};

/// All that a player may ask about a track: what it is, which entry covers a time (around the starts of some
/// entries, and at both ends), times and texts of some entries from either end and around count and capacity, each
/// text in buffers of many sizes. The number of entries looked at is bounded.
void ask(SubtitleParser& parser, U32 track = 0);

/// `ask`, and once more in the Big5 language when the input has bytes above 0x7F.
void askInEveryLanguage(SubtitleParser& parser, Input in);

/// The player's calls on a parser that was just constructed, up to its destruction.
void play(std::unique_ptr<SubtitleParser> parser, Input in);

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
/// left out: the scan has to bear whatever it gets; `onDescriptor` has them.
template <class Parser>
void inMemory(Input in) {
    Parser parser(-1, 0, 0);
    if (!load(parser, in)) return;
    {
        const GuardClosed closed(parser);
        vxsubtitle::prepareScan(parser, vxsubtitle::formatOf<Parser>());
        parser.ParserThread();
        askInEveryLanguage(parser, in);
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
    return {{"memory", inMemory<Parser>}, {"player", onDescriptor<Parser>}};
}

/// Takes --driver=NAME out of the arguments; ends the program for --drivers and for a name that there is not.
void chooseDriver(int* argc, char** argv);

/// The chosen driver, or all of them.
std::vector<Driver> chosenDrivers();

}  // namespace fuzz
