// Looks at a picture's pixels where the library leaves some out, or takes one for the background's.
#include "tools/check/VobSub.h"

namespace check {
namespace {

using vobsub::Picture;
using vobsub::Run;

class PixelLook {
public:
    explicit PixelLook(const Picture& picture) : mPicture(picture) {}

    Pixels look() {
        const int shown = (mPicture.height() - 1) & ~1;
        for (int field = 0; field < 2; ++field) {
            vobsub::Rows rows(mPicture, static_cast<size_t>(field));
            for (int row = field; row < mPicture.height() && !rows.atEnd(); row += 2)
                lookAtRow(row, row >= shown, rows.take(mPicture.width()));
        }
        return mPixels;
    }

private:
    void lookAtRow(int row, bool isCut, const std::vector<Run>& runs) {
        if (row == 0 && !runs.empty()) {
            mCorner = runs[0].code;
            mPixels.isCornerVisible = mPicture.isVisible(mCorner);
        }
        for (const Run& run : runs)
            mPixels.isCutVisible |= isCut && mPicture.isVisible(run.code) && run.code != mCorner;
    }

    const Picture& mPicture;
    Pixels mPixels;
    unsigned mCorner = 4;
};

}  // namespace

Pixels pixelsOf(const Picture& picture) {
    if (!picture.hasArea || picture.endsEarly || picture.width() <= 0 || picture.height() <= 0) return {};
    return PixelLook(picture).look();
}

}  // namespace check
