#include "PictureFaults.h"

#include "CheckFile.h"
#include "Log.h"

namespace vxsub {

using namespace android;

std::string PictureFaults::why(U32 index, const Television& television, const std::optional<Television::Shown>& shown) {
    if (mFile.vobSub() == nullptr) return shown ? "the plug-in draws nothing" : "the plug-in gives none";
    if (!shown || shown->area.u16Width == 0 || shown->area.u16Height == 0) return causeOf(index);
    const Size frame = frameSizeOf(mFile), surface = television.size();
    if (2 * surface.width < frame.width || 2 * surface.height < frame.height)
        return "nothing is drawn on a surface of " + std::to_string(surface.width) + "x" +
               std::to_string(surface.height);
    return "all of it is transparent";
}

const PictureFaults::Checked& PictureFaults::checked() {
    if (!mChecked) {
        const HiddenLog hidden;
        mChecked = {check::readIndex(mFile.bytes()), checkFile({mFile.options(), {}, {}})};
    }
    return *mChecked;
}

/// The line of the index that the entry comes from: of those with its start as many stand in front of it as of the
/// entries.
std::optional<size_t> PictureFaults::lineOf(U32 index) {
    const U32 start = mFile.entry(index).start;
    size_t before = 0;
    for (U32 i = 0; i < index; ++i) before += mFile.entry(i).start == start;
    const std::vector<check::IndexLine>& lines = checked().index.pictures;
    for (size_t i = 0; i < lines.size(); ++i)
        if (lines[i].start == check::Ms{start} && before-- == 0) return i;
    return std::nullopt;
}

/// Of a picture that is refused, or empty.
std::string PictureFaults::causeOf(U32 index) {
    if (const std::optional<size_t> line = lineOf(index))
        for (const check::Remark& remark : checked().report.remarks)
            if (remark.entry == *line + 1 && remark.cause != nullptr && remark.cost == check::Cost::Entries)
                return "[" + std::string(remark.cause->name) + "] " + check::sentenceOf(remark);
    return "it is refused";
}

}  // namespace vxsub
