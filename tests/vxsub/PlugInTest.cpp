// vxsub's way to SUP files, with and without the plug-in.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string.h>

#include "tests/support/Forward.h"
#include "tests/support/Interpose.h"
#include "tools/vxsub/Errors.h"
#include "tools/vxsub/SubtitleFile.h"
#include "tools/vxsub/Television.h"
#include "tools/vxsub/Text.h"
#include "tools/vxsub/Viewer.h"

namespace {

constexpr const char* kPluginPath = "/system/lib/libvxsubtitlesup.so";
bool interposed = false;
const char* plugIn = nullptr;  // what stands at that path; null: nothing

}  // namespace

extern "C" {
__attribute__((weak)) void* __interceptor_dlopen(const char*, int);
}

TEST_INTERPOSED void* dlopen(const char* path, int flags) noexcept {
    const auto open = TEST_NEXT(dlopen);
    if (!interposed || path == nullptr || strcmp(path, kPluginPath) != 0) return open(path, flags);
    return plugIn == nullptr ? nullptr : open(plugIn, flags);
}

namespace {

struct PlugInAtPath {
    explicit PlugInAtPath(const char* library) {
        interposed = true;
        plugIn = library;
    }
    ~PlugInAtPath() { interposed = false; }
};

vxsub::OpenOptions optionsFor(const test::TempFile& file) {
    vxsub::OpenOptions options;
    options.path = file.path();
    return options;
}

std::string refusalOf(const test::TempFile& file) {
    try {
        const vxsub::SubtitleFile opened(optionsFor(file));
    } catch (const vxsub::FileError& error) {
        return error.what();
    }
    return "opened";
}

constexpr char kPictures[] = "1000 2000 3 2\n2500 4000 2 2\n";

TEST(PlugIn, ThatIsMissingIsSaidToBe) {
    const PlugInAtPath nothing(nullptr);
    const test::TempFile file(kPictures, ".sup");
    const std::string words = refusalOf(file);
    EXPECT_EQ(words.find(std::string(file.path()) + ": SUP subtitles need a plug-in, " + kPluginPath + ", which "), 0u)
        << words;
}

TEST(PlugIn, ThatGivesNoParserIsSaidToGiveNone) {
    const PlugInAtPath noEntry(NO_ENTRY_PLUGIN);
    const test::TempFile file(kPictures, ".sup");
    EXPECT_EQ(refusalOf(file), std::string(file.path()) + ": the plug-in " + kPluginPath + " gives no parser for it");
}

TEST(PlugIn, ThatRefusesTheFileIsNotSaidToBeMissing) {
    const PlugInAtPath sample(SAMPLE_PLUGIN);
    const test::TempFile file("no pictures", ".sup");
    EXPECT_EQ(refusalOf(file), std::string(file.path()) + ": the library refuses it as SUP (--log shows what it says)");
}

TEST(PlugIn, AnswersInTheLibrarysPlace) {
    const PlugInAtPath sample(SAMPLE_PLUGIN);
    const test::TempFile file(kPictures, ".sup");
    vxsub::SubtitleFile opened(optionsFor(file));
    EXPECT_STREQ(vxsub::nameOf(opened.type()).word, "sup");
    EXPECT_EQ(opened.encoding(), "pictures, 256 colours");
    ASSERT_EQ(opened.count(), 2u);
    EXPECT_EQ(opened.entry(1).start, 2500u);
    EXPECT_EQ(opened.entry(1).end, 4000u);
    EXPECT_EQ(vxsub::encodeUtf8(vxsub::Viewer(opened).text(0)), "(picture 3x2 at 0, 0)");
    EXPECT_EQ(opened.entryShownAt(1500), std::optional<android::U32>(0));
    EXPECT_EQ(opened.entryShownAt(2200), std::nullopt);
    EXPECT_EQ(opened.picture(2), std::nullopt);
    EXPECT_EQ(opened.vobSub(), nullptr);
    vxsub::Television television(opened, {16, 8});
    const auto shown = television.show(0);
    ASSERT_TRUE(shown);
    EXPECT_TRUE(shown->box.isEmpty()) << "the sample draws nothing";
}

}  // namespace
