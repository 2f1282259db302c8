/// A television's surface, on which the library draws its pictures.
#pragma once

#include <stdint.h>
#include <utils/StrongPointer.h>

#include "Picture.h"
#include "SubtitleFile.h"

namespace host {
class MemoryProducer;
}

namespace vxsub {

/// The size that most televisions have.
constexpr Size kTelevision = {1920, 1080};

class Television {
public:
    /// Attaches a surface of that size to the file's parser until it is destroyed.
    Television(SubtitleFile& file, Size size);
    ~Television();
    Television(const Television&) = delete;
    Television& operator=(const Television&) = delete;

    struct Shown {
        PictureArea area;
        Image image;  ///< blank when the parser does not draw on a surface of that size
        Box box;      ///< what is seen of it
    };

    Size size() const { return mSize; }

    /// What an entry looks like; nothing when its picture cannot be decoded.
    std::optional<Shown> show(android::U32 index);

private:
    SubtitleFile& mFile;
    Size mSize;
    android::sp<host::MemoryProducer> mProducer;
};

/// The size of the frame that the pictures were made for; of a television where the file does not say.
Size frameSizeOf(const SubtitleFile& file);

/// Throws `FileError` when the file has texts.
void requirePictures(const SubtitleFile& file);

}  // namespace vxsub
