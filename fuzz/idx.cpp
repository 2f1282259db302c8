// VobSub indexes, beside a stream of three pictures.
#include <unistd.h>

#include "fuzz/Drivers.h"
#include "fuzz/Pictures.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

namespace {

using namespace android;

const std::string& stream() {
    static const std::string sub = samples::demoVobSub().sub();
    return sub;
}

void askTracks(SubtitleParserSUBIDX& parser, fuzz::Choice& choice) {
    fuzz::attachSomeSurface(parser, {parser.m_u32Width, parser.m_u32Height}, choice);
    ST_MEDIA_SUBTITLE_PARSER_INFO tracks = {};
    parser.GetSubtitleInfo(&tracks);
    for (U32 track = 0; track < tracks.u32TrackNum && track < 8; ++track) {
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
        parser.GetTrackInfo(track, &info);
        for (const U32 time : {0U, 1000U, 1001U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
            fuzz::require(parser.GetTag(track, time) < parser.GetTagNum(), "a track's tag is in the table");
        }
    }
    const U32 count = parser.GetTagNum();
    for (U32 tag = 0; tag < count; ++tag) {
        fuzz::require(parser.m_pTagBuffer[tag].s64Pos >= 0 && parser.m_pTagBuffer[tag].s64Pos <= 0xFFFFFFFF,
                      "a picture's position has 32 bits");
    }
    std::vector<U32> pictures;
    for (U32 tag = 0; tag < count && tag < 8; ++tag) {
        ST_MEDIA_SUBTITLE_PARSER_TAG times = {};
        fuzz::require(parser.GetTagInfo(0, tag, &times) == TRUE, "the times of an entry are known");
        pictures.push_back(tag);
    }
    if (count > 0) pictures.push_back(count - 1);
    if (pictures.empty()) return;
    choice.each(pictures, 1, [&](U32 tag) {
        stSubDecoderInfo info = {};
        parser.GetData(0, nullptr, 0, tag, &info);
        const fuzz::Block text(64, 0);
        parser.GetData(0, text.data(), text.size(), tag);
    });
    if (choice.oneIn(4)) parser.Refresh();
}

void scanIndex(fuzz::Input in) {
    fuzz::Choice choice(in);
    test::VobSubInMemory files;
    const fuzz::KeptBitmap bitmap(files.parser, choice);
    files.load(std::string(reinterpret_cast<const char*>(in.data), in.size), stream());
    askTracks(files.parser, choice);
}

void playDescriptors(fuzz::Input in) {
    fuzz::Choice choice(in);
    const fuzz::ThreadOrder order(choice);
    const fuzz::File idx(in);
    static const fuzz::File sub({reinterpret_cast<const U8*>(stream().data()), stream().size()});
    lseek(sub.fd(), 0, SEEK_SET);
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    const fuzz::KeptBitmap bitmap(parser, choice);
    if (parser.BeginParse(dup(idx.fd()), dup(sub.fd())) == TRUE) askTracks(parser, choice);
    parser.StopParse();
}

}  // namespace

const std::vector<fuzz::Driver> fuzz::drivers = {{"memory", scanIndex, fuzz::mutateIndex},
                                                 {"player", playDescriptors, fuzz::mutateIndex}};
