#include "PictureFault.h"

#include <stdio.h>

#include <memory>
#include <optional>

#include "subtitle/MPEGSubtitleDecoder.h"
#include "subtitle/SubtitleParserSUBIDX.h"

namespace vxsub {
namespace {

using namespace android;

constexpr S64 kPack = 2048, kWindow = 65536, kWindowStep = 16384, kDescent = 32768;

/// The program stream beside an index.
class Stream {
public:
    explicit Stream(const std::string& indexPath)
        : mFile(fopen((indexPath.substr(0, indexPath.size() - 3) + "sub").c_str(), "rbe"), fclose) {}

    /// 0 behind the end.
    unsigned at(S64 position) const {
        if (mFile == nullptr || fseeko(mFile.get(), position, SEEK_SET) != 0) return 0;
        const int byte = getc(mFile.get());
        return byte == EOF ? 0 : unsigned(byte);
    }
    unsigned wordAt(S64 position) const { return at(position) << 8 | at(position + 1); }
    bool hasStartCode(S64 position, unsigned id) const {
        return wordAt(position) == 0 && at(position + 2) == 1 && at(position + 3) == id;
    }

private:
    std::unique_ptr<FILE, int (*)(FILE*)> mFile;
};

std::string hexadecimal(S64 position) {
    char text[24];
    snprintf(text, sizeof text, "%09llX", static_cast<unsigned long long>(position));
    return text;
}

std::optional<PictureFault> faultOfPack(const Stream& stream, S64 pack) {
    if (!stream.hasStartCode(pack, 0xBA) || stream.at(pack + 4) >= 0x80)
        return PictureFault{"vob-no-pack", "there is no MPEG-2 pack at " + hexadecimal(pack) + " of the .sub file"};
    const bool hasPacket = stream.hasStartCode(pack + 14, 0xBD) && (stream.at(pack + 20) & 0xC0) == 0x80;
    if (hasPacket) return std::nullopt;
    if ((stream.at(pack + 13) & 7) != 0)
        return PictureFault{"vob-stuffing", "the pack header at " + hexadecimal(pack) + " has stuffing bytes"};
    return PictureFault{"vob-no-pack", "the pack at " + hexadecimal(pack) + " holds no subtitle packet"};
}

/// Follows the packs that the picture is spread over.
std::optional<PictureFault> faultInStream(const Stream& stream, S64 position) {
    const S64 windowEnd = position - position % kWindowStep + kWindow;
    S64 left = 0;
    for (S64 pack = position;;) {
        if (std::optional<PictureFault> fault = faultOfPack(stream, pack)) return fault;
        const S64 payload = pack + 24 + stream.at(pack + 22);
        const S64 end = pack + 20 + stream.wordAt(pack + 18);
        if (pack == position) left = stream.wordAt(payload);
        if (left == 0) return PictureFault{"vob-unit-size-0", "the picture's own size is 0"};
        left -= end - payload;
        if (left <= 0 || end <= pack) return std::nullopt;
        if (end % kPack != 0)
            return PictureFault{"vob-packs-not-2048",
                                "its pack at " + hexadecimal(pack) + " does not end at a multiple of 2048 bytes"};
        if (end >= windowEnd)
            return PictureFault{"vob-window", "it does not lie within 64 KiB, counted from a multiple of 16384"};
        pack = end;
    }
}

std::string sizeOf(const DisplayParam& display) {
    return std::to_string(int(display.u16AreaRight) - display.u16AreaLeft + 1) + "x" +
           std::to_string(int(display.u16AreaBottom) - display.u16AreaTop + 1);
}

}  // namespace

PictureFault faultOf(SubtitleFile& file, U32 index) {
    const bool isDecoded = file.picture(index).has_value();
    const SubtitleParserSUBIDX& parser = *file.vobSub();
    const DisplayParam& display = parser.m_pDecoder->m_display_param;
    if (isDecoded) {
        if (display.u16AreaRight == 0 && display.u16AreaBottom == 0)
            return {"vob-bad-commands", "its control sequences are damaged, or name no area"};
        return {"vob-two-rows", "its area of " + sizeOf(display) + " has too few rows"};
    }
    const ST_MEDIA_SUBTITLE_PARSER_TAG* const tag = parser.m_pTagBuffer + index;
    if (index + 1 < file.count() && tag[1].s64Pos + kDescent < tag->s64Pos)
        return {"vob-descending", "the next picture of the index lies more than 32 KiB in front of it"};
    if (const std::optional<PictureFault> fault = faultInStream(Stream(file.path()), tag->s64Pos)) return *fault;
    return {"vob-area-too-large", "its area of " + sizeOf(display) + " is upside down or too large"};
}

}  // namespace vxsub
