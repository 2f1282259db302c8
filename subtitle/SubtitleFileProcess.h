/// Uniform access to a subtitle file, whether the player hands over a path, an open descriptor, or a path with an
/// offset and a length.
#pragma once

#include <stdio.h>

#include "subtitle/SubtitleTypes.h"

namespace android {

/// A concrete parser makes one in its constructor, opens it in `BeginParse`, reads the data once, and closes and
/// destroys it in its destructor. Not thread-safe: one thread at a time.
class VXSUBTITLE_API SubtitleFileProcess {
public:
    /// Where the data comes from.
    enum FileSourceType : U32 {
        SOURCE_TYPE_UNKNOWN = 0,            ///< no constructor chooses it
        SOURCE_TYPE_URL = 1,                ///< a path, or the descriptor that this object owns
        SOURCE_TYPE_FD = 2,                 ///< the bare descriptor, without a stream; no constructor chooses it
        SOURCE_TYPE_URL_OFFSET_LENGTH = 3,  ///< a part of a file
    };

    /// Up to 511 bytes of `path` are kept with a terminator; a longer one fills the field without a terminator.
    explicit SubtitleFileProcess(U8* path);

    /// Keeps a duplicate of `fd`; the caller's stays the caller's. `offset` and `length` are kept, not applied.
    SubtitleFileProcess(int fd, S64 offset, S64 length);

    /// The `length` bytes from `offset` on. `Length` answers `length` without looking at the file.
    SubtitleFileProcess(U8* path, S64 offset, S64 length);

    SubtitleFileProcess(const SubtitleFileProcess&) = delete;
    SubtitleFileProcess& operator=(const SubtitleFileProcess&) = delete;

    /// Does nothing: `Close` comes before.
    ~SubtitleFileProcess() = default;

    /// 1 when the data can be read, 0 when not. A stream that an earlier call opened is closed first.
    S32 Open();

    /// Closes the descriptor, then the stream. Always 0; may be called again.
    S32 Close();

    /// Length of the data in bytes. A failure is the largest value.
    U64 Length();

    /// Reads up to `n` bytes at the current position and returns how many came. A null `buf` reads nothing.
    U64 Read(U8* buf, U64 n);

    /// Repositions the descriptor, not the stream. Always 0.
    S64 Seek(U32 offset, U32 whence);

    FileSourceType mSourceType;  ///< chosen by the constructor
    char pFileName[512];         ///< the path, padded with zeros
    FILE* fpFile;                ///< the stream that `Open` made; null when none
    int mFd;                     ///< a descriptor owned by this object; -1 when none
    S64 mOffset;                 ///< start of the data within the file, bytes
    S64 mLength;                 ///< length of the data, bytes
};

}  // namespace android
