#include "subtitle/SubtitleFileProcess.h"

#include <string.h>
#include <unistd.h>

#include "subtitle/system/Descriptor.h"
#include "subtitle/system/Log.h"
#include "subtitle/system/PathField.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr const char* kTag = "SubtitleFileProcess";

/// A stream on a duplicate, so that closing the descriptor and then the stream closes neither twice.
FILE* openDuplicate(int fd) {
    const int copy = duplicate(fd);
    if (copy < 0) return nullptr;
    FILE* const stream = fdopen(copy, "rb");
    if (stream == nullptr) close(copy);
    return stream;
}

/// Positions and lengths are signed 32-bit values, as the device's `long`.
S32 low32(S64 value) { return static_cast<S32>(static_cast<U32>(value)); }

}  // namespace

SubtitleFileProcess::SubtitleFileProcess(U8* path)
    : mSourceType(SOURCE_TYPE_URL), fpFile(nullptr), mFd(-1), mOffset(0), mLength(0) {
    storePath(pFileName, path);
}

SubtitleFileProcess::SubtitleFileProcess(int fd, S64 offset, S64 length)
    // kept(file-whole): not SOURCE_TYPE_FD; the descriptor is opened as a stream, offset and length are not applied
    : mSourceType(SOURCE_TYPE_URL), fpFile(nullptr), mFd(duplicate(fd)), mOffset(offset), mLength(length) {
    storePath(pFileName, nullptr);
}

SubtitleFileProcess::SubtitleFileProcess(U8* path, S64 offset, S64 length)
    : mSourceType(SOURCE_TYPE_URL_OFFSET_LENGTH), fpFile(nullptr), mFd(-1), mOffset(offset), mLength(length) {
    storePath(pFileName, path);
}

S32 SubtitleFileProcess::Open() {
    if (fpFile != nullptr) {
        fclose(fpFile);
        fpFile = nullptr;
    }
    const Path path(pFileName);
    switch (mSourceType) {
        case SOURCE_TYPE_URL_OFFSET_LENGTH:
            VX_LOG(kTag, "Open  %s    offset \n", path.text);
            fpFile = mFd >= 0 ? openDuplicate(mFd) : fopen(path.text, "rbe");
            if (fpFile == nullptr) return 0;
            return fseek(fpFile, low32(mOffset), SEEK_SET) == -1 ? 0 : 1;
        case SOURCE_TYPE_FD:
            VX_LOG(kTag, "check fd %d\n", mFd);
            if (mFd < 0) return 0;
            return lseek(mFd, low32(mOffset), SEEK_SET) == -1 ? 0 : 1;
        case SOURCE_TYPE_URL:
            if (mFd < 1) {  // kept(file-descriptor-0): descriptor 0 counts as none
                VX_LOG(kTag, "Open filename = %s\n", path.text);
                fpFile = fopen(path.text, "rbe");
            } else {
                VX_LOG(kTag, "Open fd =%d\n", mFd);
                fpFile = openDuplicate(mFd);
            }
            if (fpFile != nullptr) return 1;
            VX_LOG(kTag, "fopen fialded fun=%s line=%d\n", "Open", 110);
            return 0;
        default:
            return 0;
    }
}

S32 SubtitleFileProcess::Close() {
    const bool streamed = mSourceType == SOURCE_TYPE_URL || mSourceType == SOURCE_TYPE_URL_OFFSET_LENGTH;
    if (!streamed && mSourceType != SOURCE_TYPE_FD) return 0;
    // the descriptor goes first, the stream after it
    if (mFd >= 1) {  // kept(file-descriptor-0): a duplicate that came out as 0 is never closed
        close(mFd);
        mFd = -1;
    }
    if (streamed && fpFile != nullptr) {
        fclose(fpFile);
        fpFile = nullptr;
    }
    return 0;
}

U64 SubtitleFileProcess::Length() {
    S32 length = -1;
    switch (mSourceType) {
        case SOURCE_TYPE_URL_OFFSET_LENGTH:
            return static_cast<U64>(mLength);
        case SOURCE_TYPE_FD:
            length = low32(lseek(mFd, 0, SEEK_END));
            lseek(mFd, 0, SEEK_SET);
            break;
        case SOURCE_TYPE_URL:
            if (fpFile == nullptr) break;
            fseek(fpFile, 0, SEEK_END);
            length = low32(ftell(fpFile));
            fseek(fpFile, 0, SEEK_SET);
            break;
        default:
            return 0;
    }
    return static_cast<U64>(S64{length});  // kept(file-failure-size): a failure, -1, becomes the largest value
}

U64 SubtitleFileProcess::Read(U8* buf, U64 n) {
    if (buf == nullptr) return 0;
    switch (mSourceType) {
        case SOURCE_TYPE_FD:
            // kept(file-failure-size): a failure, -1, becomes 4294967295
            return static_cast<U32>(read(mFd, buf, static_cast<U32>(n)));
        case SOURCE_TYPE_URL:
        case SOURCE_TYPE_URL_OFFSET_LENGTH:
            return fpFile == nullptr ? 0 : fread(buf, 1, static_cast<size_t>(n), fpFile);
        default:
            return 0;
    }
}

S64 SubtitleFileProcess::Seek(U32 offset, U32 whence) {
    // kept(file-seek): the stream is not touched, and nobody learns how it went
    (void)lseek(mFd, low32(offset), static_cast<int>(whence));
    return 0;
}

}  // namespace android
