// A machine that has no more memory, descriptors, threads or files that read: the n-th request fails, for every n, in
// the whole life of every class. Nothing is left behind, nothing is thrown, and what succeeds is right. And a machine
// that works on and on.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "host/MemoryProducer.h"
#include "subtitle/MPEGSubtitleDecoder.h"
#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/SubtitleParserInternal.h"
#include "subtitle/SubtitleParserSUB.h"
#include "subtitle/SubtitleParserSUBIDX.h"
#include "subtitle/SubtitleParserSUPWrapper.h"
#include "tests/support/Cuts.h"
#include "tests/support/Formats.h"
#include "tests/support/Forward.h"
#include "tests/support/HeldMemory.h"
#include "tests/support/Interpose.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

extern "C" {
int property_get(const char* key, char* value, const char* fallback);
static int (*const __interceptor_property_get)(const char*, char*, const char*) = nullptr;
}

/// The desktop's store of properties is no part of the library: its memory never runs out here.
TEST_INTERPOSED int property_get(const char* key, char* value, const char* fallback) {
    const test::OwnMemory own;
    return TEST_NEXT(property_get)(key, value, fallback);
}

namespace {

using namespace test;

/// What an opening that says TRUE has found.
enum class Found { kEverything, kPerhapsLess };

/// One life of an object, from construction to destruction: whether it could be opened.
using Life = std::function<bool(Found)>;

/// A call into the library, whose memory may run out.
template <class Call>
auto library(Call call) {
    const LibraryMemory counted;
    return call();
}

template <class Object, class... Arguments>
Object& make(std::optional<Object>& object, Arguments... arguments) {
    const LibraryMemory counted;
    return object.emplace(arguments...);
}

template <class Object>
void end(std::optional<Object>& object) {
    const LibraryMemory counted;
    object.reset();
}

class Resources {
public:
    void expectUnchanged() const {
        EXPECT_EQ(mThreads, threadCount()) << "a thread was left behind";
        EXPECT_EQ(mDescriptors, openDescriptors()) << "a descriptor was left behind";
    }

private:
    unsigned mThreads = threadCount(), mDescriptors = openDescriptors();
};

/// Lives once, where waits take no time and a worker ends before its creator goes on.
bool live(const Life& life, Found found) {
    const VirtualClock clock;
    const ThreadsEndFirst order;
    try {
        return life(found);
    } catch (const std::exception& thrown) {
        ADD_FAILURE() << "thrown out of the library: " << thrown.what();
        return false;
    }
}

void expectToSurviveShortages(const Life& life) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    const Resources resources;
    EXPECT_TRUE(live(life, Found::kEverything)) << "undisturbed";
    using Extent = NthAllocationFails::Extent;
    for (const Extent extent : {Extent::kAlone, Extent::kAndAllLater}) {
        bool reached = true;
        for (size_t number = 1; reached && number < 10000 && !testing::Test::HasFailure(); ++number) {
            SCOPED_TRACE((extent == Extent::kAlone ? "allocation " : "from allocation ") + std::to_string(number));
            const OwnMemory own;
            const NthAllocationFails fails(number, extent);
            const bool opened = live(life, Found::kEverything);
            reached = fails.wasReached();
            if (!reached) {
                EXPECT_TRUE(opened);
                EXPECT_GT(number, 1u) << "nothing was allocated at all";
            }
            resources.expectUnchanged();
        }
    }
}

/// Calls that an opening cannot do without, and those whose failure shows in what is found.
constexpr const char* kNeeded[] = {"dup", "fdopen", "fopen", "pthread_create"};
constexpr const char* kOthers[] = {"ftell", "fseek", "lseek", "fread", "read", "half fread", "half read"};

void expectToSurviveFailures(const Life& life, bool refusesAtOnce = true) {
    const Resources resources;
    const auto everyCall = [&](const char* name, bool needed, int error) {
        for (const int times : {1, 1000}) {
            bool hit = true;
            for (int after = 0; hit && after < 1000 && !testing::Test::HasFailure(); ++after) {
                SCOPED_TRACE(name + (times == 1 ? " number "s : " from number "s) + std::to_string(after + 1));
                const CallFails fails(name, times, after, error);
                const bool opened = live(life, needed ? Found::kEverything : Found::kPerhapsLess);
                hit = fails.failed() != 0;
                if (!hit || (needed && refusesAtOnce)) {
                    EXPECT_EQ(!hit, opened);
                }
                resources.expectUnchanged();
            }
        }
    };
    for (const char* const name : kNeeded) everyCall(name, true, 0);
    for (const char* const name : kOthers) everyCall(name, false, 0);
    for (const char* const name : {"fread", "read"}) everyCall(name, false, EINTR);
}

// ---------------------------------------------------------------------------------------------------- text formats

/// What a player asks of a parser, opened or not.
template <class Parser>
void ask(Parser& parser) {
    U8 text[256];
    ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
    library([&] {
        parser.GetData(0, text, sizeof text, 0);
        parser.GetTag(0, 4500);
        parser.GetTagInfo(0, 0, &tag);
        parser.GetTrackInfo(0, &info);
        parser.StopParse();
    });
}

template <class Format>
bool textLife(const TempFile& file, bool byPath, size_t entries, Found found) {
    using Parser = typename Format::Parser;
    std::optional<Parser> parser;
    if (byPath) {
        make(parser, pathFor<Parser>(file.path()));
    } else {
        make(parser, file.fd(), S64{0}, S64{0});
    }
    parser->SetFrameRate(25);
    const BOOL result = library([&] { return parser->BeginParse(); });
    EXPECT_LE(result, TRUE);
    EXPECT_LE(parser->GetTagNum(), entries);
    if (result == TRUE) {
        EXPECT_EQ(TRUE, parser->bParseFinish);
        if (found == Found::kEverything) {
            EXPECT_EQ(entries, parser->GetTagNum());
            if (entries == 1) {
                EXPECT_EQ(Format::entries(), entriesOf(*parser));
            }
        }
    } else {
        EXPECT_EQ(FALSE, parser->bParseFinish);
        EXPECT_EQ(0u, parser->GetTagNum());
        EXPECT_EQ("!untouched", textOf(*parser, 0));
    }
    ask(*parser);
    EXPECT_EQ(TRUE, library([&] { return parser->Deinit(); }));
    ask(*parser);
    end(parser);
    return result == TRUE;
}

template <class Format>
class FailingMachine : public testing::Test {};

TYPED_TEST_SUITE(FailingMachine, TextFormats, FormatNames);

TYPED_TEST(FailingMachine, WithoutMemory) {
    const TempFile file(TypeParam::file());
    for (const bool byPath : {true, false}) {
        expectToSurviveShortages([&](Found found) { return textLife<TypeParam>(file, byPath, 1, found); });
    }
}

TYPED_TEST(FailingMachine, WithoutMemoryForMoreEntries) {
    std::string content;
    for (int i = 0; i < 8200; ++i) content += TypeParam::file();
    const TempFile file(content);
    expectToSurviveShortages([&](Found found) { return textLife<TypeParam>(file, true, 8200, found); });
}

TYPED_TEST(FailingMachine, WithCallsThatFail) {
    const TempFile file(TypeParam::file());
    for (const bool byPath : {true, false}) {
        expectToSurviveFailures([&](Found found) { return textLife<TypeParam>(file, byPath, 1, found); });
    }
}

// ------------------------------------------------------------------------------------------------------ dispatcher

bool dispatcherLife(const TempFile& file, bool byPath, const std::string& entries, Found found) {
    std::optional<SubtitleParserSUB> parser;
    if (byPath) {
        make(parser, pathFor<SubtitleParserSUB>(file.path()));
    } else {
        make(parser, file.fd(), S64{0}, S64{0});
    }
    const int left = parser->u32FileFD;
    parser->SetFrameRate(25);
    const BOOL result = library([&] { return parser->BeginParse(); });
    EXPECT_LE(result, TRUE);
    if (result == TRUE) {
        EXPECT_NE(nullptr, parser->m_pParser);
        if (found == Found::kEverything && parser->m_pParser != nullptr) {
            EXPECT_EQ(entries, entriesOf(*parser->m_pParser));
        }
    } else {
        EXPECT_EQ(nullptr, parser->m_pParser);
        EXPECT_EQ(0u, parser->GetTagNum());
        EXPECT_EQ(0xFFFFFFFFu, parser->GetTag(0, 0));
        EXPECT_EQ("!untouched", textOf(*parser, 0));
    }
    ask(*parser);
    library([&] { return parser->Deinit(); });
    ask(*parser);
    end(parser);
    if (left > 0) close(left);
    return result == TRUE;
}

/// With a file that the dialect takes, and no other.
template <class Dialect>
void expectDispatcherToSurvive(bool shortages) {
    constexpr bool kDvb = Dialect::kType == E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_DVB_SUBTITLE_SYSTEM;
    const TempFile file(kDvb ? "0:00:01:00 0:00:04:00   Hello\r\n" : Dialect::file());
    const std::string entries = [&] {
        SubtitleParserSUB undisturbed(pathFor<SubtitleParserSUB>(file.path()));
        undisturbed.SetFrameRate(25);
        EXPECT_EQ(TRUE, undisturbed.BeginParse());
        return entriesOf(*undisturbed.m_pParser);
    }();
    for (const bool byPath : {true, false}) {
        if (shortages) {
            expectToSurviveShortages([&](Found found) { return dispatcherLife(file, byPath, entries, found); });
        } else {  // a dialect whose trial cannot be opened leaves the file to the next
            expectToSurviveFailures([&](Found) { return dispatcherLife(file, byPath, entries, Found::kPerhapsLess); },
                                    false);
        }
    }
}

TEST(FailingMachineDispatcher, WithoutMemory) {
#define VX_SUB_DIALECT(name, ...) expectDispatcherToSurvive<name>(true);
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
}

TEST(FailingMachineDispatcher, WithCallsThatFail) {
#define VX_SUB_DIALECT(name, ...) expectDispatcherToSurvive<name>(false);
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
}

// ---------------------------------------------------------------------------------------------------------- VobSub

/// A producer whose own memory never runs out.
class Producer : public host::MemoryProducer {
public:
    Producer() : MemoryProducer({160, 120, 160}) {}
    status_t dequeue(ANativeWindowBuffer** buffer, uint64_t usage) override {
        const OwnMemory own;
        return MemoryProducer::dequeue(buffer, usage);
    }
    status_t queue(ANativeWindowBuffer* buffer, int fence) override {
        const OwnMemory own;
        return MemoryProducer::queue(buffer, fence);
    }
    status_t cancel(ANativeWindowBuffer* buffer, int fence) override {
        const OwnMemory own;
        return MemoryProducer::cancel(buffer, fence);
    }
};

samples::VobSub filmOfTwo() {
    samples::VobSub film(160, 120, {0x000000, 0xFFFFFF, 0x202020, 0x808080});
    film.track("en");
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"HI"}, 1);
    picture.spareLines = 1;
    film.add(1000, picture);
    film.add(2000, picture);
    return film;
}

/// The producer's notes get their room now, before memory is short.
void warmUp(Producer& producer) {
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    parser.SetIGraphicBufferProducer(&producer);
    for (int i = 0; i < 8; ++i) parser.Refresh();
    parser.SetIGraphicBufferProducer(nullptr);
    producer.forget();
}

struct VobSub {
    VobSub() : pair(filmOfTwo().idx(), filmOfTwo().sub()), producer(new Producer) { warmUp(*producer); }

    bool live(bool byPath, Found found) {
        producer->forget();
        const int idx = byPath ? -1 : ::open(pair.idx().c_str(), O_RDONLY | O_CLOEXEC);
        const int sub = byPath ? -1 : ::open(pair.sub().c_str(), O_RDONLY | O_CLOEXEC);
        std::optional<SubtitleParserSUBIDX> parser;
        if (byPath) {
            make(parser, pair.path());
        } else {
            make(parser, -1, -1, S64{0}, S64{0});
        }
#ifdef __arm__  // the counted objects of the platform allocate as they are constructed, and cannot be unwound here
        {
            const OwnMemory platforms;
            parser->SetIGraphicBufferProducer(producer);
        }
#else
        try {
            library([&] { parser->SetIGraphicBufferProducer(producer); });
        } catch (const std::bad_alloc&) {  // the platform's
            EXPECT_EQ(nullptr, parser->m_NativeWindow.get());
        }
#endif
        const BOOL result = library([&] { return byPath ? parser->BeginParse() : parser->BeginParse(idx, sub); });
        EXPECT_LE(result, TRUE);
        if (result == TRUE && found == Found::kEverything) {
            EXPECT_EQ(2u, parser->GetTagNum());
            EXPECT_EQ(1u, parser->m_vPrivateTrackInfo.size());
        }
        for (U32 i = 0; i < 3; ++i) {
            stSubDecoderInfo info{};
            const U32 drawn = library([&] { return parser->GetData(0, nullptr, 0, i, &info); });
            if (drawn != 0) {
                EXPECT_EQ(drawn, mDrawn != 0 ? mDrawn : (mDrawn = drawn));
            }
            pictures += drawn != 0 && found == Found::kEverything ? 1 : 0;
        }
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
        ST_MEDIA_SUBTITLE_PARSER_TAG tag{};
        library([&] {
            parser->GetTag(0, 1500);
            parser->GetTagInfo(0, 1, &tag);
            parser->GetTrackInfo(0, &info);
            parser->Refresh();
            parser->StopParse();
        });
        const bool attached = parser->m_NativeWindow != nullptr;
        library([&] { return parser->Deinit(); });
        EXPECT_EQ(0u, library([&] { return parser->GetData(0, nullptr, 0, 0, nullptr); }));
        end(parser);
        EXPECT_FALSE(producer->dequeued() && cancels) << "a buffer is neither queued nor cancelled";
        return result == TRUE && attached;
    }

    VobSubPair pair;
    sp<Producer> producer;
    bool cancels = true;
    int pictures = 0;

private:
    U32 mDrawn = 0;
};

TEST(FailingMachineVobSub, WithoutMemory) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    VobSub film;
    for (const bool byPath : {true, false}) {
        expectToSurviveShortages([&](Found found) { return film.live(byPath, found); });
    }
    EXPECT_GT(film.pictures, 2);
}

// What a picture larger than the parser's bitmap is drawn from is allocated for its drawing alone.
TEST(FailingMachineVobSub, WithoutMemoryForALargePicture) {
    if (!AllocationFails::supported()) GTEST_SKIP() << "allocations cannot be made to fail here";
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap(2000, 1100);
    picture.spareLines = 1;
    samples::VobSub film(160, 120, {0x000000, 0xFFFFFF, 0x202020, 0x808080});
    film.track("en");
    film.add(1000, picture);
    VobSubInMemory files;
    files.load(film.idx(), film.sub());
    const sp<Producer> producer(new Producer);
    files.parser.SetIGraphicBufferProducer(producer);
    stSubDecoderInfo info{};
    U32 undrawn = 0;
    {
        const AllocationFails fails(2000 * 1100, 2000 * 1100);
        undrawn = files.parser.GetData(0, nullptr, 0, 0, &info);
    }
    EXPECT_NE(0u, undrawn);
    EXPECT_EQ(2000, info.u16Width);
    EXPECT_EQ(1100, info.u16Height);
    EXPECT_TRUE(producer->queued().empty());
    EXPECT_EQ(undrawn, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    EXPECT_EQ(1u, producer->queued().size());
}

TEST(FailingMachineVobSub, WithCallsThatFail) {
    VobSub film;
    for (const bool byPath : {true, false}) {
        expectToSurviveFailures([&](Found found) { return film.live(byPath, found); });
    }
}

TEST(FailingMachineVobSub, WithASurfaceThatFails) {
    VobSub film;
    using host::Step;
    const Resources resources;
    for (const Step step : {Step::kDequeue, Step::kLock, Step::kUnlock, Step::kQueue, Step::kCancel}) {
        for (const int status : {-ENODEV, -ENOMEM, 3}) {
            for (unsigned passing = 0; passing < 6; ++passing) {
                SCOPED_TRACE(std::to_string(static_cast<int>(step)) + " behind " + std::to_string(passing));
                film.producer = new Producer;
                film.producer->failNext(step, status, passing);
                film.cancels = step != Step::kCancel;
                const int before = film.pictures;
                EXPECT_TRUE(live([&](Found found) { return film.live(true, found); }, Found::kEverything));
                EXPECT_EQ(before + 2, film.pictures) << "a drawing that fails goes unnoticed";
                resources.expectUnchanged();
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------------- other classes

bool queueLife(Found) {
    std::optional<SubtitleParserInternal> queue;
    make(queue);
    bool all = true;
    for (const U32 start : {1000u, 3000u, 2000u, 4000u}) {
        const size_t before = queue->m_vSubtitleInfo.size();
        const BOOL pushed =
            library([&] { return queue->AddSubtitleText(kUtf8, 0, "Hi{x}there", 10, start, start + 900); });
        EXPECT_EQ(before + (pushed == TRUE ? 1 : 0), queue->m_vSubtitleInfo.size());
        all = all && pushed == TRUE;
        U8 text[16] = {};
        const U32 tag = library([&] { return queue->GetTag(0, start + 10); });
        EXPECT_EQ(pushed == TRUE ? start : 0xFFFFFFFF, tag);
        EXPECT_EQ(pushed == TRUE ? 7u : 0u, library([&] { return queue->GetData(0, text, sizeof text, tag); }));
        EXPECT_STREQ(pushed == TRUE ? "Hithere" : "", reinterpret_cast<const char*>(text));
    }
    EXPECT_EQ(TRUE, library([&] { return queue->ClearSubtitleData(); }));
    const BOOL last = library([&] { return queue->AddSubtitleText(kUtf8, 0, "x", 1, 5, 6); });
    end(queue);
    return all && last == TRUE;
}

TEST(FailingMachineQueue, WithoutMemory) { expectToSurviveShortages(queueLife); }

bool wrapperLife(bool byPath) {
    std::optional<SubtitleParserSUPWrapper> wrapper;
    char path[] = "/nowhere.sup";
    if (byPath) {
        make(wrapper, &path[0]);
    } else {
        make(wrapper, -1, S64{0}, S64{0});
    }
    EXPECT_EQ(FALSE, library([&] { return wrapper->BeginParse(); }));
    EXPECT_EQ(0x80000000u, library([&] { return wrapper->GetTag(0, 0); }));
    EXPECT_EQ(0x80000000u, library([&] { return wrapper->GetData(0, nullptr, 0, 0, nullptr); }));
    EXPECT_EQ(0u, library([&] { return wrapper->GetTagNum(); }));
    EXPECT_EQ(FALSE, library([&] { return wrapper->Refresh(); }));
    end(wrapper);
    return true;
}

TEST(FailingMachineWrapper, WithoutMemory) {
    if (access("/system/lib/libvxsubtitlesup.so", F_OK) == 0) GTEST_SKIP() << "a plug-in is there";
    for (const bool byPath : {true, false}) expectToSurviveShortages([&](Found) { return wrapperLife(byPath); });
}

bool decoderLife(Found) {
    // one field of eight pixels each; "05" area 0-7 x 0-2, "06" offsets
    const U8 kUnit[] = {0,    34,   0, 8, 0x40, 0x20, 0x40, 0x20, 0, 0, 0, 8, 1, 3, 0x32, 0x10, 4,
                        0xFF, 0xFF, 5, 0, 0,    7,    0,    0,    2, 6, 0, 4, 0, 6, 0xFF, 0xFF, 0};
    std::optional<MPEGSubtitleDecoder> decoder;
    make(decoder);
    U32 palette[16] = {0, 0x11111100, 0x22222200, 0x33333300};
    library([&] { decoder->Set_VobSub_Palette(palette, 16); });
    U8 unit[sizeof kUnit];
    memcpy(unit, kUnit, sizeof kUnit);
    U8 out[64] = {}, transparent = 0;
    RGBPaletteColor colours[4] = {};
    stSubDecoderInfo info{};
    EXPECT_EQ(TRUE, library([&] {
                  return decoder->Decode(unit, sizeof unit, out, sizeof out, &transparent, colours, &info);
              }));
    EXPECT_EQ(8, info.u16Width);
    const bool hasPalette = decoder->m_pPaletteTable != nullptr;
    end(decoder);
    return hasPalette;
}

TEST(FailingMachineDecoder, WithoutMemory) { expectToSurviveShortages(decoderLife); }

bool fileLife(const TempFile& file, bool byPath, Found found) {
    std::optional<SubtitleFileProcess> source;
    if (byPath) {
        make(source, pathFor<SubtitleParserSUB>(file.path()));
    } else {
        make(source, file.fd(), S64{0}, S64{0});
    }
    const S32 opened = library([&] { return source->Open(); });
    char content[16] = {};
    const U64 length = library([&] { return source->Length(); });
    const U64 count = library([&] { return source->Read(reinterpret_cast<U8*>(content), 10); });
    if (opened == 1) {
        if (found == Found::kEverything) {
            EXPECT_EQ(10u, length);
            EXPECT_EQ(10u, count);
            EXPECT_STREQ("0123456789", content);
        }
        EXPECT_LE(count, 10u);
    } else {
        EXPECT_EQ(0, opened);
        EXPECT_EQ(0u, count);
        EXPECT_EQ(~U64{0}, length);
    }
    library([&] { return source->Close(); });
    end(source);
    return opened == 1;
}

TEST(FailingMachineFile, WithoutMemory) {
    const TempFile file("0123456789");
    for (const bool byPath : {true, false}) {
        expectToSurviveShortages([&](Found found) { return fileLife(file, byPath, found); });
    }
}

TEST(FailingMachineFile, WithCallsThatFail) {
    const TempFile file("0123456789");
    for (const bool byPath : {true, false}) {
        expectToSurviveFailures([&](Found found) { return fileLife(file, byPath, found); });
    }
}

// ------------------------------------------------------------------------------------------------------ on and on

/// Opens, reads and destroys a parser of the format, on the machine's own clock.
template <class Format>
void playOnce(const TempFile& file, bool byPath) {
    using Parser = typename Format::Parser;
    std::optional<Parser> parser;
    if (byPath) {
        parser.emplace(pathFor<Parser>(file.path()));
    } else {
        parser.emplace(file.fd(), 0, 0);
    }
    parser->SetFrameRate(25);
    ASSERT_EQ(TRUE, parser->BeginParse());
    ASSERT_EQ(Format::entries(), entriesOf(*parser));
}

void playOnceByDispatcher(const TempFile& file) {
    SubtitleParserSUB parser(pathFor<SubtitleParserSUB>(file.path()));
    ASSERT_EQ(TRUE, parser.BeginParse());
    ASSERT_EQ(1u, parser.GetTagNum());
}

using Play = std::function<void(bool byPath)>;

struct Plays {
#define VX_SUB_DIALECT(name, ...) , TempFile(name::file())
    const TempFile files[8] = {
        TempFile(Srt::file()), TempFile(Ssa::file()), TempFile(Smi::file()), TempFile(Txt::file())
#include "subtitle/parser/SubDialects.def"
    };
#undef VX_SUB_DIALECT
    VobSubPair pair{filmOfTwo().idx(), filmOfTwo().sub()};

    std::vector<Play> all() {
        size_t next = 0;
        std::vector<Play> plays;
        const auto add = [&](auto format) {
            const TempFile& file = files[next++];
            plays.push_back([&file](bool byPath) { playOnce<decltype(format)>(file, byPath); });
        };
        add(Srt());
        add(Ssa());
        add(Smi());
        add(Txt());
#define VX_SUB_DIALECT(name, ...) add(name());
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
        plays.push_back([this](bool) { playOnceByDispatcher(files[7]); });
        plays.push_back([this](bool) {
            SubtitleParserSUBIDX parser(pair.path());
            ASSERT_EQ(TRUE, parser.BeginParse());
            ASSERT_NE(0u, parser.GetData(0, nullptr, 0, 1, nullptr));
        });
        return plays;
    }
};

TEST(Endurance, ThousandsOfOpeningsTakeNothingForGood) {
    Plays plays;
    const std::vector<Play> all = plays.all();
    const auto playAll = [&](size_t openings) {
        for (size_t i = 0; i < openings && !testing::Test::HasFatalFailure(); ++i) all[i % all.size()](i % 3 != 0);
    };
    playAll(100);  // what is taken once
    const Resources resources;
    const size_t before = heldBytes();
    playAll(scaled(10000));
    EXPECT_LT(heldBytes(), before + (64 << 10));
    resources.expectUnchanged();
}

TEST(Endurance, ManyParsersAtTheSameTime) {
    Plays plays;
    const std::vector<Play> all = plays.all();
    const Resources resources;
    std::atomic<size_t> next{0};
    const size_t openings = scaled(1000);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (size_t n = next++; n < openings; n = next++) all[n % all.size()](n % 2 == 0);
        });
    }
    for (std::thread& thread : threads) thread.join();
    resources.expectUnchanged();
}

}  // namespace
