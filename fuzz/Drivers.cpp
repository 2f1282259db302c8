#include "fuzz/Drivers.h"

#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

#include "tests/support/Interpose.h"

#if defined(__SANITIZE_ADDRESS__)
#define FUZZ_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FUZZ_ASAN 1
#endif
#endif
#ifdef FUZZ_ASAN
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(begin, size) ((void)(begin), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(begin, size) ((void)(begin), (void)(size))
#endif

namespace fuzz {

void require(bool holds, const char* what) {
    if (holds) return;
    fprintf(stderr, "fuzz: does not hold: %s\n", what);
    abort();
}

bool askEverything = false;

Choice::Choice(Input in) : mState(0xCBF29CE484222325 + in.size) {
    for (size_t i = 0; i < in.size; ++i) mState = (mState ^ in.data[i]) * 0x100000001B3;
}

U32 Choice::below(U32 count) {
    mState = mState * 6364136223846793005 + 1442695040888963407;
    return static_cast<U32>((mState >> 33) % count);
}

namespace {

/// Files that nobody uses at the moment.
std::vector<int>& idleFiles() {
    static std::vector<int> files;
    return files;
}

}  // namespace

File::File(Input in) {
    if (idleFiles().empty()) idleFiles().push_back(memfd_create("fuzz", MFD_CLOEXEC));
    mFd = idleFiles().back();
    idleFiles().pop_back();
    require(mFd >= 0, "a descriptor is left");
    require(ftruncate(mFd, static_cast<off_t>(in.size)) == 0, "the file changes its size");
    require(pwrite(mFd, in.data, in.size, 0) == static_cast<ssize_t>(in.size), "the file takes the input");
    require(lseek(mFd, 0, SEEK_SET) == 0, "the file goes back to its start");
    snprintf(mPath, sizeof mPath, "/proc/self/fd/%d", mFd);
}

File::~File() { idleFiles().push_back(mFd); }

namespace {

/// Where blocks lie: no byte of it may be touched but theirs.
class Arena {
public:
    static constexpr size_t kLargestBlock = 0x10000;
    static constexpr size_t kGap = 32;  ///< in front of a block, and at least behind it

    Arena() : mBytes(new U8[kSize]) { ASAN_POISON_MEMORY_REGION(mBytes.get(), kSize); }
    ~Arena() { ASAN_UNPOISON_MEMORY_REGION(mBytes.get(), kSize); }

    U8* begin(size_t size) {
        U8* const block = mBytes.get() + mUsed + kGap;
        mUsed += spaceOf(size);
        require(mUsed + kGap <= kSize, "the arena has room for all blocks at once");
        ASAN_UNPOISON_MEMORY_REGION(block, size);
#ifndef FUZZ_ASAN
        memset(block + size, kUntouched, kGap);
#endif
        return block;
    }
    void end(U8* block, size_t size) {
        mUsed -= spaceOf(size);
        require(block == mBytes.get() + mUsed + kGap, "blocks end in the opposite order of their beginning");
        ASAN_POISON_MEMORY_REGION(block, size);
#ifndef FUZZ_ASAN
        for (size_t i = 0; i < kGap; ++i) require(block[size + i] == kUntouched, "nothing is written behind a block");
#endif
    }

private:
    static constexpr size_t kSize = 8 * kLargestBlock;
    [[maybe_unused]] static constexpr U8 kUntouched = 0xC3;

    static size_t spaceOf(size_t size) { return (size + kGap + 15) / 16 * 16; }

    std::unique_ptr<U8[]> mBytes;
    size_t mUsed = 0;
};

Arena& arena() {
    static Arena all;
    return all;
}

}  // namespace

Block::Block(U32 size, U8 fill)
    : mMemory(size > Arena::kLargestBlock ? new U8[size] : nullptr),
      mData(mMemory != nullptr ? mMemory.get() : arena().begin(size)),
      mSize(size) {
    memset(mData, fill, size);
}

Block::~Block() {
    if (mMemory == nullptr) arena().end(mData, mSize);
}

void checkPositions(const SubtitleParser& parser) {
    if (parser.m_pTagBuffer == nullptr) return;
    const S64 bound = parser.m_s64DataTotalSize + kWidestStep;
    for (U32 i = 0; i < parser.m_u32TagNum && i < parser.m_u32TagBufferNum; ++i) {
        const S64 position = parser.m_pTagBuffer[i].s64Pos;
        require(position >= 0, "a position is not negative");
        require(position <= bound, "a position lies in the data, or one step behind it");
    }
}

namespace {

constexpr U32 kLargest = 0xFFFFFFFF;
constexpr U32 kFirst = 8;  // entries looked at from the start of the table
constexpr U32 kLast = 2;   // and from its end

/// How much of it an input is asked when it is not asked everything.
constexpr U32 kSomeEntries = 2;
constexpr U32 kSomeSmallBlocks = 2;
constexpr U32 kSomeReserves = 1;

std::vector<U32> entriesOf(U32 count) {
    std::vector<U32> entries;
    for (U32 i = 0; i < count && i < kFirst; ++i) entries.push_back(i);
    for (U32 i = count > kFirst + kLast ? count - kLast : kFirst; i < count; ++i) entries.push_back(i);
    return entries;
}

U32 unitSize(SubtitleParser& parser, U32 track) {
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
    parser.GetTrackInfo(track, &info);
    const bool wide = info.eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE ||
                      info.eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG;
    return wide ? 2 : 1;
}

/// Both forms of `GetData`.
enum class Form { kText, kWithGeometry };

U32 getData(SubtitleParser& parser, Form form, U32 track, U8* buf, U32 size, U32 index) {
    if (form == Form::kText) return parser.GetData(track, buf, size, index);
    stSubDecoderInfo info = {};
    return parser.GetData(track, buf, size, index, &info);
}

/// The length of the text in `block`, which it does not exceed.
U32 askText(SubtitleParser& parser, Form form, U32 track, const Block& block, U32 index) {
    const U32 units = getData(parser, form, track, block.data(), block.size(), index);
    require(U64{units} * unitSize(parser, track) <= block.size(), "a text's length is within the buffer");
    return units;
}

void askTexts(SubtitleParser& parser, Choice& choice, Form form, U32 track, U32 index) {
    constexpr U32 kSmall[] = {0, 1, 2, 3, 6, 7, 8};
    constexpr U32 kReserves[] = {0, 1, 2, 3};  // a terminator, and what walks keep
    const U32 unit = unitSize(parser, track);
    choice.each(kSmall, kSomeSmallBlocks, [&](U32 size) { askText(parser, form, track, Block(size, 0xAA), index); });
    const Block large(8192, 0xAA);
    const U32 units = askText(parser, form, track, large, index);
    if (units == 0) return;
    {  // what stood in the buffer makes no difference
        const Block largeToo(8192, 0x55);
        require(askText(parser, form, track, largeToo, index) == units, "a text has one length");
        require(memcmp(large.data(), largeToo.data(), size_t{units} * unit) == 0, "a text has one content");
    }
    // around the room that it just needs
    choice.each(kReserves, kSomeReserves,
                [&](U32 reserve) { askText(parser, form, track, Block((units + reserve) * unit, 0xAA), index); });
}

void askTimes(SubtitleParser& parser, U32 track, U32 index) {
    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {};
    if (parser.GetTagInfo(track, index, &tag) != TRUE) return;
    for (const U32 time : {tag.u32TimeStart - 1, tag.u32TimeStart, tag.u32TimeStart + 1, tag.u32TimeEnd}) {
        const U32 found = parser.GetTag(track, time);
        parser.GetTagInfo(track, found, &tag);
    }
}

}  // namespace

void ask(SubtitleParser& parser, Choice& choice, U32 track) {
    const U32 count = parser.GetTagNum();
    const auto entry = [&](U32 index) {
        askTimes(parser, track, index);
        askTexts(parser, choice, Form::kText, track, index);
        if (choice.oneIn(4)) askTexts(parser, choice, Form::kWithGeometry, track, index);
    };
    choice.each(entriesOf(count), kSomeEntries, entry);
    if (count > 0) entry(choice.below(count));  // anywhere
    for (const U32 time : {0U, 0x7FFFFFFFU, 0x80000000U, kLargest}) parser.GetTag(track, time);

    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {};
    const Block text(8, 0xAA);
    const U32 capacity = parser.m_u32TagBufferNum;
    for (const U32 edge : {count, capacity, U32{8192}, kLargest}) {
        for (const U32 index : {edge - 1, edge, edge + 1}) {
            parser.GetTagInfo(track, index, &tag);
            if (index >= count) {
                require(parser.GetData(track, text.data(), 8, index) == 0, "there is no text behind the last entry");
            }
        }
    }
    parser.GetTagInfo(track, 0, nullptr);
    parser.GetTrackInfo(track, nullptr);
    parser.GetData(track, nullptr, 8192, 0);
}

void askInSomeLanguage(SubtitleParser& parser, Input in, Choice& choice) {
    const bool ascii = std::none_of(in.data, in.data + in.size, [](U8 byte) { return byte >= 0x80; });
    const bool native = choice.below(2) == 0;
    if (ascii || native || askEverything) ask(parser, choice);
    if (ascii || (native && !askEverything)) return;
    const test::SystemProperty big5("vendor.quarn.subtitle.language", "big5");
    ask(parser, choice);
}

ThreadOrder::ThreadOrder(Choice& choice) {
    if (choice.below(16) != 0) mWorkersEndFirst.emplace();
}

void play(std::unique_ptr<SubtitleParser> parser, Input in,
          const SubtitleParser* (*tableOf)(const SubtitleParser& parser)) {
    constexpr U32 kRates[] = {0, 25, 23976};
    Choice choice(in);
    const ThreadOrder order(choice);
    parser->SetFrameRate(kRates[in.size % 3]);
    parser->BeginParse();
    if (const SubtitleParser* const table = tableOf != nullptr ? tableOf(*parser) : parser.get()) {
        checkPositions(*table);
    }
    ask(*parser, choice);
    parser->StopParse();
    parser->Deinit();
    parser->GetTag(0, 0);  // a player's late question
    parser.reset();
}

bool load(SubtitleParser& parser, Input in) {
    if (parser.Init(in.size) != TRUE) return false;
    if (in.size != 0) memcpy(parser.m_pu8RawBuffer, in.data, in.size);
    return true;
}

GuardClosed::GuardClosed(const SubtitleParser& parser)
    : mBegin(parser.m_pu8RawBuffer + parser.mRawBufferLimit),
      mSize(malloc_usable_size(parser.m_pu8RawBuffer) - parser.mRawBufferLimit) {
    ASAN_POISON_MEMORY_REGION(mBegin, mSize);
}

GuardClosed::~GuardClosed() { ASAN_UNPOISON_MEMORY_REGION(mBegin, mSize); }

void readNumbersAtEnds(SubtitleParser& parser) {
    const U32 size = parser.mRawBufferLimit;
    for (const U32 back : {size, U32{8}, U32{1}, U32{0}}) {
        if (back > size) continue;
        U32 v[8] = {};
        parser.SScanf(parser.m_pu8RawBuffer + (size - back), "%u:%u:%u,%u --> %u:%u:%u,%x",  //
                      &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7]);
    }
}

namespace {

const Driver* chosen = nullptr;

}  // namespace

void chooseDriver(int* argc, char** argv) {
    constexpr char kOption[] = "--driver=";
    for (int i = 1; i < *argc; ++i) {
        if (strcmp(argv[i], "--drivers") == 0) {
            for (const Driver& driver : drivers) puts(driver.name);
            exit(0);
        }
        if (strncmp(argv[i], kOption, strlen(kOption)) != 0) continue;
        const char* const name = argv[i] + strlen(kOption);
        for (const Driver& driver : drivers) {
            if (strcmp(driver.name, name) == 0) chosen = &driver;
        }
        if (chosen == nullptr) {
            fprintf(stderr, "%s: no driver \"%s\"; --drivers lists them\n", argv[0], name);
            exit(2);
        }
        std::copy(argv + i + 1, argv + *argc + 1, argv + i);  // with the null at the end
        --*argc;
        return;
    }
}

std::vector<Driver> chosenDrivers() {
    if (chosen == nullptr) return drivers;
    return {*chosen};
}

}  // namespace fuzz
