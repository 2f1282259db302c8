// libavformat, where it is installed, reads the same files. Where it differs from what was meant, a row says why.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>

#include "tests/meant/Listing.h"
#include "tools/meant/SystemEncodings.h"

#ifdef MEANT_HAS_AVFORMAT
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}
#endif

namespace meant {
namespace {

namespace fs = std::filesystem;

/// Files that it reads in another way, and why that is not what their authors meant.
const std::map<std::string, const char*> kDiffering = {
    {"captions.vtt.srt", "It reads WebVTT, which is not supported here and only named."},
    {"chinese_big5.srt", "It converts no encodings unless told, and shows no text."},
    {"chinese_gbk.srt", "The same."},
    {"closing.txt", "It takes the closing lines for entries without text."},
    {"cyrillic.srt", "It converts no encodings unless told, and shows no text."},
    {"few_fields.ssa", "It counts fields without a look at the Format line."},
    {"frames.sub", "It takes the first time for a whole line's, and the rest for text."},
    {"hebrew.srt", "It converts no encodings unless told, and shows no text."},
    {"loose.srt", "It does not open a file whose first time has no hours."},
    {"no_rate.sub", "It takes 23.976 frames a second where no rate is given."},
    {"numbered.sub", "It does not know the format."},
    {"one_class.smi", "It has entries for the empty paragraphs."},
    {"open.txt", "It does not open a file that begins with a title."},
    {"script.ass", "It sorts the entries, and shows the drawing's coordinates."},
    {"two_classes.smi", "It makes one track of both classes."},
    {"two_lines.txt", "It does not know lines with numbers."},
    {"utf32.srt", "It does not know UTF-32."},
};

#ifdef MEANT_HAS_AVFORMAT

template <auto Function>
struct Freed {
    template <class T>
    void operator()(T* object) const {
        Function(&object);
    }
};
using Input = std::unique_ptr<AVFormatContext, Freed<avformat_close_input>>;
using Codec = std::unique_ptr<AVCodecContext, Freed<avcodec_free_context>>;
using Packet = std::unique_ptr<AVPacket, Freed<av_packet_free>>;

/// What stands behind the fields of an event: without codes, '/' for a break.
std::string textOfEvent(std::string event) {
    constexpr int kFields = 8;
    for (int i = 0; i < kFields; ++i) event.erase(0, event.find(',') + 1);
    std::string text;
    for (size_t at = 0; at < event.size(); ++at) {
        if (event[at] == '{') {
            at = std::min(event.find('}', at), event.size());
        } else if (event.compare(at, 2, "\\N") == 0) {
            text += '/';
            ++at;
        } else {
            text += event[at];
        }
    }
    return text;
}

std::string textOf(AVPacket* packet, AVCodecContext* codec) {
    AVSubtitle subtitle{};
    int hasText = 0;
    if (avcodec_decode_subtitle2(codec, &subtitle, &hasText, packet) < 0 || hasText == 0) return {};
    std::string text;
    for (unsigned i = 0; i < subtitle.num_rects; ++i)
        if (subtitle.rects[i]->ass != nullptr) text += textOfEvent(subtitle.rects[i]->ass);
    avsubtitle_free(&subtitle);
    return text;
}

Ms inMs(int64_t time, AVRational unit) { return av_rescale_q(time, unit, {1, 1000}); }

/// The entries as the tests list them.
std::string opinionOn(const fs::path& path) {
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0) return "cannot be opened";
    const Input input(opened);
    if (input->nb_streams == 0) return "no streams";
    const AVStream& stream = *input->streams[0];
    const Codec codec(avcodec_alloc_context3(nullptr));
    if (avcodec_parameters_to_context(codec.get(), stream.codecpar) < 0) return "no codec";
    codec->pkt_timebase = stream.time_base;
    if (avcodec_open2(codec.get(), avcodec_find_decoder(stream.codecpar->codec_id), nullptr) < 0) return "no decoder";
    std::string list;
    const Packet packet(av_packet_alloc());
    while (av_read_frame(input.get(), packet.get()) >= 0) {
        const Ms start = inMs(packet->pts, stream.time_base),
                 end = inMs(packet->pts + packet->duration, stream.time_base);
        list += (list.empty() ? "" : "; ") + std::to_string(start) + "-" + std::to_string(end) + " " +
                textOf(packet.get(), codec.get());
        av_packet_unref(packet.get());
    }
    return list;
}

#endif

TEST(MeantSecondOpinion, DiffersWhereItIsExplained) {
#ifndef MEANT_HAS_AVFORMAT
    GTEST_SKIP() << "built without libavformat";
#else
    av_log_set_level(AV_LOG_QUIET);
    size_t alike = 0;
    for (const auto& entry : fs::directory_iterator(MEANT_FILES)) {
        const fs::path& path = entry.path();
        if (path.extension() == ".meant") continue;
        std::ifstream stream(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        Options options;
        options.ending = path.extension().string().substr(1);
        const std::string meant = listed(read(bytes, options, systemEncodings())), opinion = opinionOn(path);
        const auto reason = kDiffering.find(path.filename().string());
        alike += meant == opinion;
        EXPECT_EQ(meant != opinion, reason != kDiffering.end())
            << path.filename() << "\nmeant   " << meant << "\nopinion " << opinion;
    }
    EXPECT_LE(8u, alike);
#endif
}

TEST(MeantSecondOpinion, EveryExplanationIsOfAFile) {
    for (const auto& row : kDiffering) EXPECT_TRUE(fs::exists(fs::path(MEANT_FILES) / row.first)) << row.first;
}

}  // namespace
}  // namespace meant
