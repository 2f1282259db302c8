/// Entries as a person sees them: texts as the player gets them, pictures where a television draws them.
#pragma once

#include <optional>
#include <string>

#include "Json.h"
#include "PictureFaults.h"
#include "Television.h"

namespace vxsub {

class Viewer {
public:
    explicit Viewer(SubtitleFile& file, const std::optional<Size>& surface = std::nullopt);

    /// An entry's text, or words for its picture.
    std::u32string text(android::U32 index);

    /// The same for programs, behind the entry's times. With `raw`, also the units of a text.
    Json json(android::U32 index, bool raw);

    /// Nothing for texts, and for a picture that cannot be decoded.
    std::optional<Television::Shown> picture(android::U32 index);

    /// What `text` says of a picture.
    std::u32string wordsFor(android::U32 index, const std::optional<Television::Shown>& shown);

    /// Why nothing of it is seen.
    std::string why(android::U32 index, const std::optional<Television::Shown>& shown) {
        return mFaults.why(index, *mTelevision, shown);
    }

private:
    SubtitleFile& mFile;
    PictureFaults mFaults;
    std::optional<Television> mTelevision;  ///< none for texts
};

/// Where a picture is seen on the television; empty when it is not.
Box placeOf(const SubtitleFile& file, const Television::Shown& shown);

std::string sizeText(int width, int height);  ///< "1920x1080"

Json boxJson(const Box& box);

}  // namespace vxsub
