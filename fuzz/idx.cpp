// VobSub indexes, beside a stream of three pictures.
#include <unistd.h>

#include "fuzz/Drivers.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

namespace {

using namespace android;

const std::string& stream() {
    static const std::string sub = samples::demoVobSub().sub();
    return sub;
}

void askTracks(SubtitleParserSUBIDX& parser) {
    ST_MEDIA_SUBTITLE_PARSER_INFO tracks = {};
    parser.GetSubtitleInfo(&tracks);
    for (U32 track = 0; track < tracks.u32TrackNum && track < 8; ++track) {
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
        parser.GetTrackInfo(track, &info);
        for (const U32 time : {0U, 1000U, 1001U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
            fuzz::require(parser.GetTag(track, time) < parser.GetTagNum(), "a track's tag is in the table");
        }
    }
    for (U32 tag = 0; tag < parser.GetTagNum() && tag < 8; ++tag) {
        ST_MEDIA_SUBTITLE_PARSER_TAG times = {};
        fuzz::require(parser.GetTagInfo(0, tag, &times) == TRUE, "the times of an entry are known");
        stSubDecoderInfo info = {};
        parser.GetData(0, nullptr, 0, tag, &info);
        const fuzz::Block text(64, 0);
        parser.GetData(0, text.data(), text.size(), tag);
    }
}

void scanIndex(fuzz::Input in) {
    test::VobSubInMemory files;
    files.load(std::string(reinterpret_cast<const char*>(in.data), in.size), stream());
    askTracks(files.parser);
}

void playDescriptors(fuzz::Input in) {
    const fuzz::File idx(in);
    const fuzz::File sub({reinterpret_cast<const U8*>(stream().data()), stream().size()});
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    if (parser.BeginParse(dup(idx.fd()), dup(sub.fd())) == TRUE) askTracks(parser);
    parser.StopParse();
}

}  // namespace

const std::vector<fuzz::Driver> fuzz::drivers = {{"memory", scanIndex}, {"player", playDescriptors}};
