// libavformat reads packets, libavcodec makes texts and bitmaps of them.
#include <string.h>

#include "bench/General.h"
#include "bench/Table.h"

#ifdef BENCH_LIBAV

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>
#include <vector>

namespace bench {

namespace {

/// Its remarks on the films are not wanted.
const struct Quiet {
    Quiet() { av_log_set_level(AV_LOG_QUIET); }
} quiet;

struct Known {
    const char* format;
    const char* demuxer;
};
constexpr Known kKnown[] = {
    {"SRT", "srt"},
    {"SSA", "ass"},
    {"SAMI", "sami"},
    {"SubViewer 2.0", "subviewer"},
    {"SubViewer 1.0", "subviewer1"},
    {"MicroDVD", "microdvd"},
};

const AVInputFormat* demuxerOf(const char* format) {
    for (const Known& known : kKnown) {
        if (strcmp(known.format, format) == 0) return av_find_input_format(known.demuxer);
    }
    return nullptr;
}

struct ClosesInput {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using Input = std::unique_ptr<AVFormatContext, ClosesInput>;

struct FreesPacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Packet = std::unique_ptr<AVPacket, FreesPacket>;

struct FreesDecoder {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
using Decoder = std::unique_ptr<AVCodecContext, FreesDecoder>;

struct FreesIo {
    void operator()(AVIOContext* io) const {
        av_freep(&io->buffer);
        avio_context_free(&io);
    }
};
using Io = std::unique_ptr<AVIOContext, FreesIo>;

/// A file in memory.
struct Memory {
    const std::string& data;
    size_t at = 0;

    static int read(void* memory, uint8_t* buffer, int size) {
        Memory& self = *static_cast<Memory*>(memory);
        const size_t count = std::min(self.data.size() - self.at, static_cast<size_t>(size));
        if (count == 0) return AVERROR_EOF;
        memcpy(buffer, self.data.data() + self.at, count);
        self.at += count;
        return static_cast<int>(count);
    }
    static int64_t seek(void* memory, int64_t offset, int whence) {
        Memory& self = *static_cast<Memory*>(memory);
        if (whence == AVSEEK_SIZE) return static_cast<int64_t>(self.data.size());
        if (whence != SEEK_SET) return -1;
        self.at = static_cast<size_t>(offset);
        return offset;
    }
};

Input openInput(AVIOContext* io, const char* path, const AVInputFormat* format) {
    AVFormatContext* context = avformat_alloc_context();
    context->pb = io;
    if (avformat_open_input(&context, path, format, nullptr) != 0) fail("libavformat does not open the film");
    return Input(context);
}

template <class Use>
size_t readAll(AVFormatContext* input, Use use) {
    const Packet packet(av_packet_alloc());
    size_t count = 0;
    for (; av_read_frame(input, packet.get()) >= 0; ++count) {
        use(*packet);
        av_packet_unref(packet.get());
    }
    return count;
}

/// Reads a film in memory: `use(input, packet)` for each.
template <class Use>
size_t readFilm(const AVInputFormat* format, const std::string& film, Use use) {
    constexpr int kBuffer = 32768;
    Memory memory{film};
    const Io io(avio_alloc_context(static_cast<unsigned char*>(av_malloc(kBuffer)), kBuffer, 0, &memory, Memory::read,
                                   nullptr, Memory::seek));
    const Input input = openInput(io.get(), "", format);
    return readAll(input.get(), [&](AVPacket& packet) { use(*input, packet); });
}

/// Decodes a packet into a bitmap; answers its width, 0 where there is none.
int decodedWidth(AVCodecContext* decoder, AVPacket* packet) {
    AVSubtitle subtitle;
    int got = 0;
    avcodec_decode_subtitle2(decoder, &subtitle, &got, packet);
    if (got == 0) return 0;
    const int width = subtitle.num_rects == 0 ? 0 : subtitle.rects[0]->w;
    avsubtitle_free(&subtitle);
    return width;
}

Decoder openDecoder(const AVCodecParameters* parameters) {
    const AVCodec* const codec = avcodec_find_decoder(parameters->codec_id);
    Decoder decoder(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(decoder.get(), parameters);
    decoder->pkt_timebase = {1, 1000};
    if (codec == nullptr || avcodec_open2(decoder.get(), codec, nullptr) != 0) fail("libavcodec has no decoder");
    return decoder;
}

/// The packets of a film and their decoder.
struct Texts {
    std::vector<Packet> packets;
    Decoder decoder;

    size_t decode() {
        size_t count = 0;
        for (const Packet& packet : packets) {
            AVSubtitle subtitle;
            int got = 0;
            avcodec_decode_subtitle2(decoder.get(), &subtitle, &got, packet.get());
            if (got == 0) continue;
            count += subtitle.num_rects;
            avsubtitle_free(&subtitle);
        }
        return count;
    }
};

}  // namespace

std::string generalLibraries() {
    return "libavformat " AV_STRINGIFY(LIBAVFORMAT_VERSION) ", libavcodec " AV_STRINGIFY(LIBAVCODEC_VERSION);
}

bool avInstalled() { return true; }

AvScan avScan(const char* format) {
    const AVInputFormat* const demuxer = demuxerOf(format);
    if (demuxer == nullptr) return nullptr;
    return [demuxer](const std::string& data) { return readFilm(demuxer, data, [](auto&, auto&) {}); };
}

AvOpen avOpen(const char* format) {
    const AVInputFormat* const demuxer = demuxerOf(format);
    if (demuxer == nullptr) return nullptr;
    return [demuxer](const char* path) {
        const Input input = openInput(nullptr, path, demuxer);
        return readAll(input.get(), [](auto&) {});
    };
}

AvTexts avTexts(const char* format, const std::string& film) {
    const AVInputFormat* const demuxer = demuxerOf(format);
    if (demuxer == nullptr) return nullptr;
    const auto texts = std::make_shared<Texts>();
    readFilm(demuxer, film, [&](AVFormatContext& input, AVPacket& packet) {
        if (texts->decoder == nullptr) texts->decoder = openDecoder(input.streams[0]->codecpar);
        texts->packets.emplace_back(av_packet_clone(&packet));
    });
    return [texts] { return texts->decode(); };
}

AvPicture avPicture(const std::string& unit) {
    struct State {
        Packet packet{av_packet_alloc()};
        Decoder decoder;
    };
    const auto state = std::make_shared<State>();
    AVCodecParameters* parameters = avcodec_parameters_alloc();
    parameters->codec_type = AVMEDIA_TYPE_SUBTITLE;
    parameters->codec_id = AV_CODEC_ID_DVD_SUBTITLE;
    state->decoder = openDecoder(parameters);
    avcodec_parameters_free(&parameters);
    av_new_packet(state->packet.get(), static_cast<int>(unit.size()));
    memcpy(state->packet->data, unit.data(), unit.size());
    return [state] { return decodedWidth(state->decoder.get(), state->packet.get()); };
}

AvPicture avPictures(const char* idx) {
    struct State {
        Input input;
        Packet packet{av_packet_alloc()};
        Decoder decoder;
    };
    const auto state = std::make_shared<State>();
    state->input = openInput(nullptr, idx, av_find_input_format("vobsub"));
    state->decoder = openDecoder(state->input->streams[0]->codecpar);
    return [state] {
        if (av_read_frame(state->input.get(), state->packet.get()) < 0) {
            av_seek_frame(state->input.get(), 0, 0, AVSEEK_FLAG_BACKWARD);
            av_read_frame(state->input.get(), state->packet.get());
        }
        const int width = decodedWidth(state->decoder.get(), state->packet.get());
        av_packet_unref(state->packet.get());
        return width;
    };
}

}  // namespace bench

#else

namespace bench {

std::string generalLibraries() { return "libavformat, libavcodec not installed"; }
bool avInstalled() { return false; }
AvScan avScan(const char*) { return nullptr; }
AvOpen avOpen(const char*) { return nullptr; }
AvTexts avTexts(const char*, const std::string&) { return nullptr; }
AvPicture avPicture(const std::string&) { return nullptr; }
AvPicture avPictures(const char*) { return nullptr; }

}  // namespace bench

#endif
