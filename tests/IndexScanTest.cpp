// The scan of an index by itself, with a table of languages and a target of the test's own.
#include "subtitle/vobsub/IndexScan.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vxsubtitle {
namespace {

struct Target final : IndexTarget {
    bool addPicture(U32, U32) override {
        ++pictures;
        return true;
    }
    bool addTrack(EN_MEDIA_SUBTITLE_PARSER_LANGUAGE language, U32, U32) override {
        if (languages.size() == room) return false;
        languages.push_back(static_cast<int>(language));
        return true;
    }
    U32 pictureCount() const override { return pictures; }

    U32 pictures = 0;
    std::vector<int> languages;
    size_t room = 100;  ///< for tracks
};

/// Scans an index, and answers how that went. The table has "rr" as 3 and 4 and "qq" as the last, and "xy" stands right
/// behind it.
bool scan(std::string idx, Target& target) {
    struct {
        LanguageCodes codes;
        U8 behind[2];
    } table = {{{'u', 'u'}}, {'x', 'y'}};
    table.codes[E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM - 1][0] = 'q';
    table.codes[E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM - 1][1] = 'q';
    for (const int row : {3, 4}) table.codes[row][0] = table.codes[row][1] = 'r';
    EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;
    U32 palette[16] = {}, width = 0, height = 0, originX = 0, originY = 0, filled = 1;
    S64 position = 1;
    std::vector<U8> buffer(kWindowSize);
    FILE* const file = fmemopen(&idx[0], idx.size(), "rb");
    IndexScan indexScan({file, buffer.data(), filled, position}, static_cast<S64>(idx.size()),
                        {codeType, palette, width, height, originX, originY}, table.codes, target, {});
    const bool complete = indexScan.run();
    fclose(file);
    return complete;
}

constexpr char kPicture[] = "\ntimestamp: 00:00:01:000, filepos: 000000000\n";

TEST(IndexScan, LooksForALanguageInTheTableAlone) {
    std::string idx;
    for (const char* const letters : {"qq", "xy", "uu", "rr", "zz"}) idx += std::string("id: ") + letters + kPicture;
    Target target;
    EXPECT_TRUE(scan(idx, target));
    // the first row stands for no language, and the first of equal ones counts
    EXPECT_EQ((std::vector<int>{E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM - 1, 0, 0, 3, 0}), target.languages);
}

// The line of the next track, or the end of the file, closes a track.
TEST(IndexScan, EndsAtATrackThatCannotBeStored) {
    std::string idx;
    for (const char* const letters : {"qq", "uu", "rr"}) idx += std::string("id: ") + letters + kPicture;
    for (U32 room = 0; room <= 3; ++room) {
        Target target;
        target.room = room;
        EXPECT_EQ(room == 3, scan(idx, target)) << room;
        EXPECT_EQ(room, target.languages.size());
        EXPECT_EQ(room == 3 ? 3 : room + 1, target.pictures) << "no line behind it is read";
    }
}

}  // namespace
}  // namespace vxsubtitle
