/// A VobSub index scanned in memory, what its scan found in words, and a small film to index.
#pragma once

#include <gtest/gtest.h>
#include <stddef.h>
#include <stdio.h>

#include <string>
#include <vector>

#include "subtitle/SubtitleParserSUBIDX.h"
#include "tests/support/Interpose.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

namespace test {

using Texts = std::vector<std::string>;

/// What is logged for a line that is known and of no use, `langidx:` among them.
constexpr char kUnused[] = "we will not use these informations\n";

const std::string kFirst = "timestamp: 00:00:01:000, filepos: 000000000\n";
const std::string kSecond = "timestamp: 00:00:02:000, filepos: 000000800\n";

/// "start@position" of each tag.
inline Texts tagsOf(const android::SubtitleParser& parser) {
    Texts tags;
    for (android::U32 i = 0; i < parser.m_u32TagNum; ++i) {
        char text[64];
        const auto& tag = parser.m_pTagBuffer[i];
        snprintf(text, sizeof text, "%u@%llx", tag.u32TimeStart, tag.s64Pos);
        tags.push_back(text);
        EXPECT_EQ(0xFFFFFFFFU, tag.u32TimeEnd);
        EXPECT_EQ(android::E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE, tag.eDataType);
    }
    return tags;
}

/// "language first-last" of each track.
inline Texts tracksOf(const android::SubtitleParserSUBIDX& parser) {
    Texts tracks;
    for (const auto& track : parser.m_vPrivateTrackInfo) {
        tracks.push_back(std::to_string(track.eLanguage) + " " + std::to_string(track.u32TagStart) + "-" +
                         std::to_string(track.u32TagEnd));
    }
    return tracks;
}

/// An index without a stream, and what its scan logged.
struct Scanned {
    explicit Scanned(const std::string& idx) {
        const LogCapture capture;
        files.load(idx, "");
        for (const LogLine& line : capture.lines()) {
            EXPECT_EQ(3, line.priority);
            EXPECT_EQ("", line.tag);
            log.push_back(line.text);
        }
    }
    android::SubtitleParserSUBIDX& parser() { return files.parser; }

    VobSubInMemory files;
    Texts log;
};

/// All lines of it are shown.
inline samples::Subpicture smallPicture(const std::string& letters = "HI") {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({letters}, 1);
    picture.spareLines = 1;
    return picture;
}

/// One track of pictures a second apart, a letter and a pack each.
inline samples::VobSub smallFilm(unsigned pictures) {
    samples::VobSub film(720, 576, {0x000000, 0xFFFFFF, 0x202020, 0x808080});
    film.track("en");
    for (unsigned i = 0; i < pictures; ++i)
        film.add(1000 + 1000 * i, smallPicture(std::string(1, static_cast<char>('A' + i % 26))));
    return film;
}

}  // namespace test
