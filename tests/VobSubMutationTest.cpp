// Damaged VobSub pairs: whatever the files hold, nothing is read or written outside, nothing hangs.
//
// VX_MUTATIONS=100000 VobSubMutationTest runs that many of each kind instead of the few of the suite; best built with
// the address and undefined-behaviour sanitizers.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>

#include <random>
#include <string>
#include <vector>

#include "host/MemoryProducer.h"
#include "subtitle/MPEGSubtitleDecoder.h"
#include "subtitle/SubtitleParserSUBIDX.h"
#include "tests/support/Interpose.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

using namespace android;

namespace {

unsigned rounds() {
    const char* const text = getenv("VX_MUTATIONS");
    return text != nullptr ? static_cast<unsigned>(strtoul(text, nullptr, 10)) : 1000;
}

class Mutator {
public:
    explicit Mutator(unsigned seed) : mRandom(seed) {}

    unsigned below(unsigned n) { return n == 0 ? 0 : static_cast<unsigned>(mRandom() % n); }

    /// A few bytes changed and, unless everything is to stay in its place, cut out, put in or moved.
    std::string damaged(std::string data, bool inPlace = false) {
        for (unsigned n = 1 + below(8); n-- > 0 && !data.empty();) {
            const unsigned at = below(static_cast<unsigned>(data.size()));
            const unsigned length = below(40);
            switch (below(inPlace ? 3 : 7)) {
                case 0:
                    data[at] = static_cast<char>(below(256));
                    break;
                case 1:
                    data[at] = static_cast<char>(data[at] ^ 1 << below(8));
                    break;
                case 2:
                    if (data.size() >= 2) {  // a 16-bit field gets a value at a bound
                        const char* const kBounds[] = {"\x00\x00", "\xFF\xFF", "\x00\x04", "\xFF\xFE", "\x7F\xFF"};
                        data.replace(below(static_cast<unsigned>(data.size()) - 1), 2,
                                     std::string(kBounds[below(5)], 2));
                    }
                    break;
                case 3:
                    data.erase(at, length);
                    break;
                case 4:
                    data.insert(at, data.substr(below(static_cast<unsigned>(data.size())), length));
                    break;
                case 5:
                    data.insert(at, std::string(length, "\0\xFF \n9"[below(5)]));
                    break;
                default:
                    if (below(4) == 0) data.resize(at);
                    break;
            }
        }
        return data;
    }

private:
    std::mt19937 mRandom;
};

std::string longIndex() {
    std::string idx = samples::demoVobSub().idx() + "delay: -00:00:01:500\ncustom colors: OFF\nalpha: 100%\n";
    for (unsigned i = 0; i < 2000; ++i) {
        if (i % 100 == 0) idx += "id: " + std::string(i % 200 == 0 ? "en" : "xx") + "\n";
        idx += samples::indexLine(i * 1000, i % 10 * 0x800) + "\n";
    }
    return idx;
}

/// Every lookup that a player makes.
void useAll(SubtitleParserSUBIDX& parser) {
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info;
    ST_MEDIA_SUBTITLE_PARSER_INFO overview;
    parser.GetSubtitleInfo(&overview);
    for (U32 track = 0; track < overview.u32TrackNum && track < 4; ++track) {
        parser.GetTrackInfo(track, &info);
        for (const U32 ms : {0U, 1U, 5000U, 1000000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
            EXPECT_LT(parser.GetTag(track, ms), parser.GetTagNum());
        }
    }
}

}  // namespace

TEST(VobSubMutations, Indexes) {
    const std::string plain = samples::demoVobSub().idx();
    const std::string kinds[] = {plain,       test::utf16le(plain),      test::utf16be(plain), "\xEF\xBB\xBF" + plain,
                                 longIndex(), test::utf16le(longIndex())};
    const std::string sub = samples::demoVobSub().sub();
    Mutator mutate(1);
    test::VobSubInMemory files;
    for (unsigned round = 0; round < rounds(); ++round) {
        const unsigned kind = mutate.below(20);  // mostly short ones
        files.load(mutate.damaged(kinds[kind < 6 ? kind : kind % 4]), sub);
        ASSERT_EQ(TRUE, files.parser.bParseFinish) << round;
        useAll(files.parser);
        if (round % 16 == 0 && files.parser.GetTagNum() != 0) {
            files.parser.GetData(0, nullptr, 0, mutate.below(files.parser.GetTagNum()), nullptr);
        }
    }
}

TEST(VobSubMutations, Units) {
    std::vector<std::string> units;
    for (const unsigned scale : {1U, 3U}) {
        samples::Subpicture picture;
        picture.bitmap = samples::drawText({"BREAK ME,", "IF YOU CAN!"}, scale);
        units.push_back(samples::encodeUnit(picture));
        picture.shownMs = 0;
        units.push_back(samples::encodeUnit(picture));
    }
    Mutator mutate(2);
    MPEGSubtitleDecoder decoder;
    U32 palette[16] = {};
    unsigned decoded = 0;
    for (unsigned round = 0; round < rounds(); ++round) {
        if (round % 2 == 1) decoder.Set_VobSub_Palette(palette, 16);
        if (round % 1000 == 0) decoder.m_bVobSubPaletteSetted = FALSE;
        const std::string unit = mutate.damaged(units[mutate.below(4)], mutate.below(4) != 0);
        std::vector<U8> in(unit.begin(), unit.end());
        std::vector<U8> out(mutate.below(3) == 0 ? mutate.below(20000) : 20000);
        stSubDecoderInfo info;
        U8 transparent;
        RGBPaletteColor colours[4];
        const BOOL result = decoder.Decode(in.data(), static_cast<U16>(in.size()), out.data(),
                                           static_cast<U32>(out.size()), &transparent, colours, &info);
        if (result == TRUE && info.u16Width != 0) ++decoded;
        for (const U8 code : out) ASSERT_LT(code, 4) << round;
    }
    EXPECT_GT(decoded, rounds() / 4) << "many still show something";
}

TEST(VobSubMutations, Streams) {
    const samples::VobSub whole = samples::demoVobSub();
    Mutator mutate(3);
    test::VobSubInMemory files;
    const sp<host::MemoryProducer> producer = new host::MemoryProducer({64, 48});
    files.parser.SetIGraphicBufferProducer(producer);
    unsigned drawn = 0;
    for (unsigned round = 0; round < rounds(); ++round) {
        files.load(whole.idx(), mutate.damaged(whole.sub()));
        files.parser.m_u32Width = mutate.below(150);
        files.parser.m_u32Height = mutate.below(110);
        for (U32 index = 0; index < files.parser.GetTagNum(); index += 1 + mutate.below(3)) {
            stSubDecoderInfo info;
            drawn += files.parser.GetData(0, nullptr, 0, index, &info) != 0;
        }
        producer->forget();
    }
    EXPECT_GT(drawn, rounds() / 2);
    EXPECT_FALSE(producer->dequeued());
}
