// A small SUP plug-in: everything that the library asks of one, without a decoder.
//
// It reads its own toy format, one line per picture: "START END WIDTH HEIGHT", times in milliseconds. A picture is a
// chequerboard of its size. Every call is logged, so that tests see what arrives here.
#include <android/log.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "subtitle/SubtitleParser.h"

#define SAMPLE_LOG(...) ((void)__android_log_print(ANDROID_LOG_DEBUG, "SamplePlugin", __VA_ARGS__))

namespace android {

namespace {

struct Picture {
    U32 startMs, endMs, width, height;
};

/// Answers the eight operations that are passed on to a plug-in; a tag is a picture's number.
class SampleParser : public SubtitleParser {
public:
    explicit SampleParser(std::string data) : mData(std::move(data)) {}

    BOOL BeginParse() override {
        SAMPLE_LOG("BeginParse");
        mPictures.clear();
        for (size_t line = 0; line < mData.size();) {
            Picture picture = {};
            const int fields = sscanf(mData.c_str() + line, "%u %u %u %u", &picture.startMs, &picture.endMs,
                                      &picture.width, &picture.height);
            if (fields == 4) mPictures.push_back(picture);
            const size_t lineEnd = mData.find('\n', line);
            line = lineEnd != std::string::npos ? lineEnd + 1 : mData.size();
        }
        return mPictures.empty() ? FALSE : TRUE;
    }

    U32 GetTag(const U32 track, const U32 timeMs) override {
        SAMPLE_LOG("GetTag %u %u", track, timeMs);
        for (U32 tag = 0; tag < mPictures.size(); ++tag) {
            if (mPictures[tag].startMs <= timeMs && timeMs < mPictures[tag].endMs) return tag;
        }
        return 0x80000000;
    }

    BOOL GetTagInfo(U32 track, U32 tag, ST_MEDIA_SUBTITLE_PARSER_TAG* info) override {
        SAMPLE_LOG("GetTagInfo %u %u", track, tag);
        if (info == nullptr || tag >= mPictures.size()) return FALSE;
        info->u32TimeStart = mPictures[tag].startMs;
        info->u32TimeEnd = mPictures[tag].endMs;
        return TRUE;
    }

    using SubtitleParser::GetData;

    /// One byte per pixel, 0 or 1; the number of bytes written.
    U32 GetData(const U32 track, U8* buf, const U32 size, const U32 tag, stSubDecoderInfo* info) override {
        SAMPLE_LOG("GetData %u %u %u", track, size, tag);
        if (buf == nullptr || info == nullptr || tag >= mPictures.size()) return 0x80000000;
        const Picture& picture = mPictures[tag];
        *info = {static_cast<U16>(picture.width), static_cast<U16>(picture.height), 0, 0};
        U32 written = 0;
        for (U32 y = 0; y < picture.height; ++y) {
            for (U32 x = 0; x < picture.width && written < size; ++x) buf[written++] = static_cast<U8>((x + y) % 2);
        }
        return written;
    }

    BOOL GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) override {
        SAMPLE_LOG("GetTrackInfo %u", track);
        if (info == nullptr) return FALSE;
        info->eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_SUP;
        info->eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I8;
        return TRUE;
    }

    U32 GetTagNum() override {
        SAMPLE_LOG("GetTagNum");
        return static_cast<U32>(mPictures.size());
    }

    BOOL Refresh() override {
        SAMPLE_LOG("Refresh");
        return TRUE;
    }

    void SetIGraphicBufferProducer(const sp<IGraphicBufferProducer>& producer) override {
        SAMPLE_LOG("SetIGraphicBufferProducer %p", static_cast<const void*>(&producer));
    }

private:
    std::string mData;
    std::vector<Picture> mPictures;
};

/// The parsers handed out: the player's wrapper never destroys one, so they live until the library is closed.
std::vector<std::unique_ptr<SampleParser>> parsers;

std::string readAll(const char* path) {
    std::string data;
    FILE* const file = fopen(path, "rb");
    if (file == nullptr) return data;
    char chunk[512];
    while (const size_t count = fread(chunk, 1, sizeof chunk, file)) data.append(chunk, count);
    fclose(file);
    return data;
}

std::string readPart(int fd, S64 offset, S64 length) {
    std::string data(static_cast<size_t>(length), '\0');
    const ssize_t count = pread(fd, data.data(), data.size(), static_cast<off_t>(offset));
    data.resize(count > 0 ? static_cast<size_t>(count) : 0);
    return data;
}

}  // namespace

/// The entry point under the name of `android::GetInstance(char*)`. It is called with a path, or, through the same
/// name, with a descriptor, an offset and a length; a descriptor is a small number, which no address of a path is.
/// Null when there is nothing to read.
extern "C" VXSUBTITLE_API SubtitleParser* getInstance(intptr_t pathOrFd, S64 offset,
                                                      S64 length) __asm__("_ZN7android11GetInstanceEPc");

SubtitleParser* getInstance(intptr_t pathOrFd, S64 offset, S64 length) {
    if (pathOrFd == 0) return nullptr;
    if (pathOrFd > 0 && pathOrFd < 4096) {
        const int fd = static_cast<int>(pathOrFd);
        SAMPLE_LOG("GetInstance %d %lld %lld", fd, offset, length);
        parsers.push_back(std::make_unique<SampleParser>(readPart(fd, offset, length)));
    } else {
        const char* const path = reinterpret_cast<const char*>(pathOrFd);
        SAMPLE_LOG("GetInstance %s", path);
        parsers.push_back(std::make_unique<SampleParser>(readAll(path)));
    }
    return parsers.back().get();
}

}  // namespace android
