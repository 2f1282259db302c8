// The wrapper around the SUP plug-in: loading, forwarding, neutral answers.
#include "subtitle/SubtitleParserSUPWrapper.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/support/Forward.h"
#include "tests/support/Interpose.h"

namespace {

constexpr const char* kPluginPath = "/system/lib/libvxsubtitlesup.so";

/// What stands at the plug-in's path as far as `dlopen` can tell, and what the loader was asked for.
struct Loader {
    bool active = false;
    const char* plugin = nullptr;  ///< the library that stands there; null: none
    std::vector<std::string> calls;
    void* handle = nullptr;
};
Loader loader;

}  // namespace

extern "C" {
__attribute__((weak)) void* __interceptor_dlopen(const char*, int);
__attribute__((weak)) int __interceptor_dlclose(void*);
}

TEST_INTERPOSED void* dlopen(const char* path, int flags) noexcept {
    const auto open = TEST_NEXT(dlopen);
    if (!loader.active || path == nullptr || strcmp(path, kPluginPath) != 0) return open(path, flags);
    loader.calls.push_back(std::string("dlopen ") + path + (flags == RTLD_NOW ? " now" : " otherwise"));
    loader.handle = loader.plugin != nullptr ? open(loader.plugin, flags) : nullptr;
    return loader.handle;
}

TEST_INTERPOSED int dlclose(void* handle) noexcept {
    if (loader.active) loader.calls.push_back(handle == loader.handle ? "dlclose" : "dlclose of something else");
    return TEST_NEXT(dlclose)(handle);
}

namespace android {
namespace {

constexpr U32 kNothing = 0x80000000;

using Lines = std::vector<test::LogLine>;

test::LogLine wrapper(const char* text) { return {3, "SubtitleParserSUPWrapper", text}; }
test::LogLine sample(const std::string& text) { return {3, "SamplePlugin", text}; }
test::LogLine places(const char* text) { return {3, "PlacesPlugin", text}; }

const test::LogLine kNoPlugin = wrapper("SubtitleParserSUPWrapper can not open the libvxsubtitlesup.so");
const test::LogLine kGotInstance = wrapper("SubtitleParserSUPWrapper  GetInstance ok");
const test::LogLine kDestroyed = wrapper("SubtitleParserSUPWrapper::~SubtitleParserSUPWrapper");

/// While it lives, `plugin` stands at the plug-in's path; null: nothing does.
class PluginAtPath {
public:
    explicit PluginAtPath(const char* plugin) {
        loader = {};
        loader.active = true;
        loader.plugin = plugin;
    }
    ~PluginAtPath() { loader.active = false; }
    PluginAtPath(const PluginAtPath&) = delete;
    PluginAtPath& operator=(const PluginAtPath&) = delete;

    std::vector<std::string> calls() const { return loader.calls; }
    void* handle() const { return loader.handle; }
};

bool isLoaded(const char* plugin) {
    void* const handle = dlopen(plugin, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
}

char* writable(const char* path) { return const_cast<char*>(path); }

/// A reference to pass on: nobody here looks at what it refers to.
const sp<IGraphicBufferProducer>& aProducer() {
    static const void* const pointer = nullptr;
    return reinterpret_cast<const sp<IGraphicBufferProducer>&>(pointer);
}

void expectNeutral(SubtitleParserSUPWrapper& parser) {
    const test::LogCapture log;
    EXPECT_EQ(nullptr, parser.mImpl);
    EXPECT_EQ(FALSE, parser.BeginParse());
    EXPECT_EQ(FALSE, parser.BeginParse(5));
    EXPECT_EQ(0u, parser.GetTagNum());
    EXPECT_EQ(kNothing, parser.GetTag(0, 1500));
    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {1, 2, 3, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_PART};
    EXPECT_EQ(FALSE, parser.GetTagInfo(0, 0, &tag));
    EXPECT_EQ(1u, tag.u32TimeStart);
    EXPECT_EQ(2u, tag.u32TimeEnd);
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
    EXPECT_EQ(FALSE, parser.GetTrackInfo(0, &info));
    EXPECT_EQ(FALSE, parser.Refresh());
    U8 buffer[4] = {9, 9, 9, 9};
    stSubDecoderInfo picture = {1, 2, 3, 4};
    EXPECT_EQ(kNothing, parser.GetData(0, buffer, sizeof buffer, 0, &picture));
    EXPECT_EQ(1u, picture.u16Width);
    EXPECT_EQ(9u, buffer[0]);
    parser.SetIGraphicBufferProducer(aProducer());
    EXPECT_EQ(Lines{}, log.lines());
}

/// What a player without a plug-in can still call: the base's answers.
void expectTheBaseElsewhere(SubtitleParserSUPWrapper& parser) {
    const test::LogCapture log;
    U8 buffer[4] = {};
    EXPECT_EQ(0u, parser.GetData(0, buffer, sizeof buffer, 0));
    EXPECT_EQ(TRUE, parser.StopParse());
    EXPECT_EQ(FALSE, parser._render(buffer, 1, 1));
    EXPECT_EQ(TRUE, parser.RenderSubtitle());
    EXPECT_EQ(TRUE, parser.Init(16));
    EXPECT_NE(nullptr, parser.m_pu8RawBuffer);
    EXPECT_EQ(TRUE, parser.Deinit());
    EXPECT_EQ(nullptr, parser.m_pu8RawBuffer);
    EXPECT_EQ(Lines{}, log.lines());
}

#ifdef __arm__
static_assert(offsetof(SubtitleParserSUPWrapper, mLock) == sizeof(SubtitleParser) &&
              offsetof(SubtitleParserSUPWrapper, mImpl) == sizeof(SubtitleParser) + sizeof(Mutex) &&
              offsetof(SubtitleParserSUPWrapper, mSupHandle) == sizeof(SubtitleParser) + sizeof(Mutex) + 4);
#endif

TEST(SubtitleParserSUPWrapper, AnswersWithoutAPlugin) {
    for (const bool byPath : {true, false}) {
        const PluginAtPath nothing(nullptr);
        const test::LogCapture log;
        {
            SubtitleParserSUPWrapper parser =
                byPath ? SubtitleParserSUPWrapper(writable("/a.sup")) : SubtitleParserSUPWrapper(3, 0, 100);
            EXPECT_EQ(nullptr, parser.mSupHandle);
            expectNeutral(parser);
            expectTheBaseElsewhere(parser);
        }
        EXPECT_EQ((Lines{kNoPlugin, kDestroyed}), log.lines());
        EXPECT_EQ(std::vector<std::string>{"dlopen /system/lib/libvxsubtitlesup.so now"}, nothing.calls());
    }
}

TEST(SubtitleParserSUPWrapper, AnswersWithoutAnEntryPoint) {
    const PluginAtPath noEntry(NO_ENTRY_PLUGIN);
    const test::LogCapture log;
    {
        SubtitleParserSUPWrapper parser(writable("/a.sup"));
        EXPECT_EQ(noEntry.handle(), parser.mSupHandle);
        EXPECT_TRUE(isLoaded(NO_ENTRY_PLUGIN));
        loader.calls.clear();
        expectNeutral(parser);
        expectTheBaseElsewhere(parser);
        EXPECT_EQ(Lines{}, log.lines());
    }
    EXPECT_EQ(Lines{kDestroyed}, log.lines());
    EXPECT_EQ(std::vector<std::string>{"dlclose"}, noEntry.calls());
    EXPECT_FALSE(isLoaded(NO_ENTRY_PLUGIN));
}

TEST(SubtitleParserSUPWrapper, AnswersWithoutAnInstance) {
    const PluginAtPath plugin(SAMPLE_PLUGIN);
    const test::LogCapture log;
    {
        SubtitleParserSUPWrapper parser(nullptr);  // the sample gives none for it
        EXPECT_NE(nullptr, parser.mSupHandle);
        expectNeutral(parser);
    }
    EXPECT_EQ((Lines{kGotInstance, kDestroyed}), log.lines());
    EXPECT_EQ((std::vector<std::string>{"dlopen /system/lib/libvxsubtitlesup.so now", "dlclose"}), plugin.calls());
}

constexpr char kPictures[] = "1000 2000 3 2\n2500 4000 2 2\n";

/// A player's whole calling order on the sample plug-in, which was asked for `instance`.
void playSample(SubtitleParserSUPWrapper& parser, const test::LogCapture& log, const std::string& instance) {
    const sp<IGraphicBufferProducer>& producer = aProducer();
    char shown[64];
    snprintf(shown, sizeof shown, "SetIGraphicBufferProducer %p", static_cast<const void*>(&producer));

    SubtitleParser& asPlayersHoldIt = parser;
    asPlayersHoldIt.SetIGraphicBufferProducer(producer);
    EXPECT_EQ(TRUE, asPlayersHoldIt.BeginParse());
    EXPECT_EQ(2u, asPlayersHoldIt.GetTagNum());
    EXPECT_EQ(kNothing, asPlayersHoldIt.GetTag(0, 999));
    EXPECT_EQ(1u, asPlayersHoldIt.GetTag(7, 2500));
    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {};
    EXPECT_EQ(TRUE, asPlayersHoldIt.GetTagInfo(8, 1, &tag));
    EXPECT_EQ(2500u, tag.u32TimeStart);
    EXPECT_EQ(4000u, tag.u32TimeEnd);
    EXPECT_EQ(FALSE, asPlayersHoldIt.GetTagInfo(8, 2, &tag));
    U8 pixels[7] = {9, 9, 9, 9, 9, 9, 9};
    stSubDecoderInfo picture = {};
    EXPECT_EQ(6u, asPlayersHoldIt.GetData(1, pixels, sizeof pixels, 0, &picture));
    EXPECT_EQ(std::string("\0\1\0\1\0\1\x9", 7), std::string(reinterpret_cast<const char*>(pixels), 7));
    EXPECT_EQ(3u, picture.u16Width);
    EXPECT_EQ(2u, picture.u16Height);
    EXPECT_EQ(0u, asPlayersHoldIt.GetData(1, pixels, sizeof pixels, 0)) << "text: the base's";
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
    EXPECT_EQ(TRUE, asPlayersHoldIt.GetTrackInfo(4, &info));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_SUP, info.eSubtitleType);
    EXPECT_EQ(TRUE, asPlayersHoldIt.Refresh());
    EXPECT_EQ(TRUE, asPlayersHoldIt.StopParse());

    EXPECT_EQ((Lines{
                  kGotInstance,
                  sample(instance),
                  sample(shown),                                                   // the caller's own reference
                  wrapper("SubtitleParserSUPWrapper::SetIGraphicBufferProducer"),  // behind its call
                  wrapper("SubtitleParserSUPWrapper::BeginParse"),
                  sample("BeginParse"),
                  wrapper("SubtitleParserSUPWrapper::GetTagNum"),
                  sample("GetTagNum"),
                  sample("GetTag 0 999"),
                  sample("GetTag 7 2500"),
                  sample("GetTagInfo 8 1"),
                  sample("GetTagInfo 8 2"),
                  sample("GetData 1 7 0"),
                  sample("GetTrackInfo 4"),
                  wrapper("SubtitleParserSUPWrapper::Refresh"),
                  sample("Refresh"),
              }),
              log.lines());
}

TEST(SubtitleParserSUPWrapper, PassesCallsOnForAPath) {
    const test::TempFile file(kPictures, ".sup");
    const PluginAtPath plugin(SAMPLE_PLUGIN);
    {
        const test::LogCapture log;
        SubtitleParserSUPWrapper parser(writable(file.path()));
        EXPECT_EQ(plugin.handle(), parser.mSupHandle);
        playSample(parser, log, std::string("GetInstance ") + file.path());
    }
    EXPECT_EQ((std::vector<std::string>{"dlopen /system/lib/libvxsubtitlesup.so now", "dlclose"}), plugin.calls());
    EXPECT_FALSE(isLoaded(SAMPLE_PLUGIN)) << "and its objects with it";
}

// kept(sup-entry-point)
TEST(SubtitleParserSUPWrapper, PassesTheDescriptorTriple) {
    const std::string before(5000, '#');
    const test::TempFile file(before + kPictures + "5000 6000 1 1\n", ".sup");
    const PluginAtPath plugin(SAMPLE_PLUGIN);
    const test::LogCapture log;
    constexpr S64 kLength = sizeof kPictures - 1;
    SubtitleParserSUPWrapper parser(file.fd(), static_cast<S64>(before.size()), kLength);
    playSample(parser, log, "GetInstance " + std::to_string(file.fd()) + " 5000 " + std::to_string(kLength));
}

TEST(SubtitleParserSUPWrapper, PassesAllSixtyFourBits) {
    const struct {
        int fd;
        S64 offset, length;
        const char* line;
    } kRows[] = {
        {0, 0, 0, "GetInstance 0 0 0"},
        {5, 0x123456789ABCDEF0, 0x0FEDCBA987654321, "GetInstance 5 1311768467463790320 1147797409030816545"},
        {-1, -2, -3, "GetInstance -1 -2 -3"},
    };
    for (const auto& row : kRows) {
        const PluginAtPath plugin(PLACES_PLUGIN);
        const test::LogCapture log;
        const SubtitleParserSUPWrapper parser(row.fd, row.offset, row.length);
        EXPECT_NE(nullptr, parser.mImpl);
        EXPECT_EQ((Lines{kGotInstance, places(row.line)}), log.lines());
    }
}

TEST(SubtitleParserSUPWrapper, CallsByPlaceAndReturnsWhatComes) {
    const PluginAtPath plugin(PLACES_PLUGIN);
    SubtitleParserSUPWrapper parser(0, 0, 0);
    const test::LogCapture log;
    stSubDecoderInfo picture;
    EXPECT_EQ(105u, parser.GetData(1, nullptr, 2, 3, &picture));
    EXPECT_EQ(106u, parser.BeginParse());
    EXPECT_EQ(109u, parser.GetTag(1, 2));
    EXPECT_EQ(110u, parser.GetTagInfo(1, 2, nullptr));
    EXPECT_EQ(111u, parser.GetTrackInfo(1, nullptr));
    EXPECT_EQ(126u, parser.GetTagNum());
    EXPECT_EQ(128u, parser.Refresh());
    parser.SetIGraphicBufferProducer(aProducer());
    EXPECT_EQ((Lines{
                  places("place 5"),
                  wrapper("SubtitleParserSUPWrapper::BeginParse"),
                  places("place 6"),
                  places("place 9"),
                  places("place 10"),
                  places("place 11"),
                  wrapper("SubtitleParserSUPWrapper::GetTagNum"),
                  places("place 26"),
                  wrapper("SubtitleParserSUPWrapper::Refresh"),
                  places("place 28"),
                  places("place 30"),
                  wrapper("SubtitleParserSUPWrapper::SetIGraphicBufferProducer"),
              }),
              log.lines());
}

TEST(SubtitleParserSUPWrapper, BeginParseWithANumberIsTheSameSingleCall) {
    const PluginAtPath plugin(PLACES_PLUGIN);
    SubtitleParserSUPWrapper parser(0, 0, 0);
    for (const bool numbered : {false, true}) {
        const test::LogCapture log;
        EXPECT_EQ(106u, numbered ? parser.BeginParse(5) : parser.BeginParse());
        EXPECT_EQ((Lines{wrapper("SubtitleParserSUPWrapper::BeginParse"), places("place 6")}), log.lines());
    }
}

// kept(sup-object)
TEST(SubtitleParserSUPWrapper, NeverDestroysThePluginsObject) {
    const PluginAtPath plugin(PLACES_PLUGIN);
    const test::LogCapture log;
    { const SubtitleParserSUPWrapper parser(0, 0, 0); }
    EXPECT_EQ((Lines{kGotInstance, places("GetInstance 0 0 0"), kDestroyed}), log.lines()) << "no call of place 0 or 1";
}

TEST(SubtitleParserSUPWrapper, LocksNothingAndHasNoWorker) {
    const PluginAtPath plugin(PLACES_PLUGIN);
    SubtitleParserSUPWrapper parser(0, 0, 0);
    ASSERT_EQ(0, parser.mLock.tryLock());
    EXPECT_EQ(106u, parser.BeginParse());
    EXPECT_EQ(109u, parser.GetTag(0, 0));
    parser.mLock.unlock();
    const unsigned threads = test::threadCount();
    EXPECT_EQ(nullptr, SubtitleParserSUPWrapper::ParserTask(&parser));
    parser.ParserThread();
    EXPECT_EQ(threads, test::threadCount());
}

TEST(SubtitleParserSUPWrapper, TwoAtATimeShareTheLibrary) {
    const test::TempFile first("1 2 1 1\n"), second("1 2 1 1\n3 4 1 1\n");
    const PluginAtPath plugin(SAMPLE_PLUGIN);
    auto* const a = new SubtitleParserSUPWrapper(writable(first.path()));
    SubtitleParserSUPWrapper b(writable(second.path()));
    EXPECT_EQ(TRUE, a->BeginParse());
    EXPECT_EQ(TRUE, b.BeginParse());
    EXPECT_EQ(1u, a->GetTagNum());
    delete a;
    EXPECT_EQ(2u, b.GetTagNum());
}

// ------------------------------------------------------------------------------------- the path as it really is

/// The sample plug-in at its real path. What was there before is put aside meanwhile, by one program at a time.
class InstalledPlugin {
public:
    InstalledPlugin() : mLock(open("/tmp/vxsubtitle-plugin-path.lock", O_CREAT | O_RDWR | O_CLOEXEC, 0666)) {
        flock(mLock, LOCK_EX);
        mMadeSystem = mkdir("/system", 0755) == 0;
        mMadeLib = mkdir("/system/lib", 0755) == 0;
        // A file put aside by a test that was stopped half-way is the one to bring back.
        if (access(kAside, F_OK) != 0) rename(kPluginPath, kAside);
        mInstalled = copy(SAMPLE_PLUGIN, kPluginPath);
    }
    ~InstalledPlugin() {
        remove();
        if (access(kAside, F_OK) == 0) rename(kAside, kPluginPath);
        if (mMadeLib) rmdir("/system/lib");
        if (mMadeSystem) rmdir("/system");
        close(mLock);
    }
    InstalledPlugin(const InstalledPlugin&) = delete;
    InstalledPlugin& operator=(const InstalledPlugin&) = delete;

    bool permitted() const { return mInstalled; }
    void remove() {
        if (mInstalled) unlink(kPluginPath);
        mInstalled = false;
    }

private:
    static constexpr const char* kAside = "/system/lib/libvxsubtitlesup.so.aside";

    static bool copy(const char* from, const char* to) {
        FILE* const in = fopen(from, "rb");
        FILE* const out = fopen(to, "wb");
        bool good = in != nullptr && out != nullptr;
        char chunk[4096];
        while (good) {
            const size_t count = fread(chunk, 1, sizeof chunk, in);
            if (count == 0) break;
            good = fwrite(chunk, 1, count, out) == count;
        }
        if (in != nullptr) fclose(in);
        if (out != nullptr && fclose(out) != 0) good = false;
        return good;
    }

    int mLock;
    bool mMadeSystem = false, mMadeLib = false, mInstalled = false;
};

TEST(SubtitleParserSUPWrapper, LoadsFromTheRealPath) {
    InstalledPlugin installed;
    if (!installed.permitted()) {
        GTEST_SKIP() << "not permitted to put a plug-in at " << kPluginPath << "; run as root to include this";
    }
    const test::TempFile file(kPictures, ".sup");
    {
        const test::LogCapture log;
        SubtitleParserSUPWrapper parser(writable(file.path()));
        ASSERT_NE(nullptr, parser.mSupHandle) << dlerror();
        playSample(parser, log, std::string("GetInstance ") + file.path());
    }
    EXPECT_FALSE(isLoaded(kPluginPath));
    {
        const test::LogCapture log;
        SubtitleParserSUPWrapper parser(file.fd(), 0, sizeof kPictures - 1);
        playSample(parser, log,
                   "GetInstance " + std::to_string(file.fd()) + " 0 " + std::to_string(sizeof kPictures - 1));
    }
    installed.remove();
    const test::LogCapture log;
    {
        SubtitleParserSUPWrapper parser(writable(file.path()));
        expectNeutral(parser);
    }
    EXPECT_EQ((Lines{kNoPlugin, kDestroyed}), log.lines());
}

}  // namespace
}  // namespace android
