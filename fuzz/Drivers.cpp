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

File::File(Input in) : mFd(memfd_create("fuzz", MFD_CLOEXEC)) {
    require(mFd >= 0, "a descriptor is left");
    require(write(mFd, in.data, in.size) == static_cast<ssize_t>(in.size), "the file takes the input");
    require(lseek(mFd, 0, SEEK_SET) == 0, "the file goes back to its start");
    snprintf(mPath, sizeof mPath, "/proc/self/fd/%d", mFd);
}

File::~File() { close(mFd); }

Block::Block(U32 size, U8 fill) : mMemory(new U8[size != 0 ? size : 8]), mData(mMemory.get()), mSize(size) {
    if (size == 0) mData += 8;  // an allocation of no bytes may have one
    memset(mData, fill, size);
}

namespace {

constexpr U32 kLargest = 0xFFFFFFFF;
constexpr U32 kFirst = 8;  // entries looked at from the start of the table
constexpr U32 kLast = 2;   // and from its end

std::vector<U32> entriesToAsk(U32 count) {
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

void askTexts(SubtitleParser& parser, U32 track, U32 index) {
    static const Block large(8192, 0xAA);
    static const Block largeToo(8192, 0x55);
    static const Block small[] = {{0, 0xAA}, {1, 0xAA}, {2, 0xAA}, {3, 0xAA}, {6, 0xAA}, {7, 0xAA}, {8, 0xAA}};
    const U32 unit = unitSize(parser, track);
    for (const Form form : {Form::kText, Form::kWithGeometry}) {
        for (const Block& block : small) askText(parser, form, track, block, index);
        const U32 units = askText(parser, form, track, large, index);
        if (units == 0) continue;
        // what stood in the buffer makes no difference
        require(askText(parser, form, track, largeToo, index) == units, "a text has one length");
        require(memcmp(large.data(), largeToo.data(), size_t{units} * unit) == 0, "a text has one content");
        // around the room that it just needs: its units, a terminator, and the reserve that walks keep
        for (U32 reserve = 0; reserve < 4; ++reserve) {
            askText(parser, form, track, Block((units + reserve) * unit, 0xAA), index);
        }
    }
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

void ask(SubtitleParser& parser, U32 track) {
    const U32 count = parser.GetTagNum();
    for (const U32 index : entriesToAsk(count)) {
        askTimes(parser, track, index);
        askTexts(parser, track, index);
    }
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

void askInEveryLanguage(SubtitleParser& parser, Input in) {
    ask(parser);
    if (std::none_of(in.data, in.data + in.size, [](U8 byte) { return byte >= 0x80; })) return;
    const test::SystemProperty big5("vendor.quarn.subtitle.language", "big5");
    ask(parser);
}

void play(std::unique_ptr<SubtitleParser> parser, Input in) {
    constexpr U32 kRates[] = {0, 25, 23976};
    parser->SetFrameRate(kRates[in.size % 3]);
    parser->BeginParse();
    ask(*parser);
    parser->StopParse();
    parser->Deinit();
    parser->GetTag(0, 0);  // a player's late question
}

bool load(SubtitleParser& parser, Input in) {
    if (parser.Init(in.size) != TRUE) return false;
    memcpy(parser.m_pu8RawBuffer, in.data, in.size);
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
