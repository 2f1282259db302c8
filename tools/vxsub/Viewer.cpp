#include "Viewer.h"

#include "Text.h"

namespace vxsub {

using namespace android;

Viewer::Viewer(SubtitleFile& file, const std::optional<Size>& surface) : mFile(file), mFaults(file) {
    if (file.hasPictures()) mTelevision.emplace(file, surface.value_or(kTelevision));
}

std::optional<Television::Shown> Viewer::picture(U32 index) {
    return mTelevision ? mTelevision->show(index) : std::nullopt;
}

std::u32string Viewer::text(U32 index) { return mTelevision ? wordsFor(index, picture(index)) : mFile.text(index); }

std::u32string Viewer::wordsFor(U32 index, const std::optional<Television::Shown>& shown) {
    const Box box = shown ? placeOf(mFile, *shown) : Box{};
    if (box.isEmpty()) return decodeUtf8("(no picture: " + why(index, shown) + ")");
    return decodeUtf8("(picture " + sizeText(box.width, box.height) + " at " + std::to_string(box.left) + ", " +
                      std::to_string(box.top) + ")");
}

Json Viewer::json(U32 index, bool raw) {
    Json value = timesOf(mFile, index);
    if (!mTelevision) {
        const Units units = mFile.units(index);
        value["text"] = encodeUtf8(mFile.decoder().decode(units));
        if (raw) value["units"] = units.values;
        return value;
    }
    const std::optional<Television::Shown> shown = picture(index);
    const Box box = shown ? placeOf(mFile, *shown) : Box{};
    value["picture"] = box.isEmpty() ? Json(nullptr) : boxJson(box);
    if (box.isEmpty()) value["why"] = why(index, shown);
    return value;
}

Box placeOf(const SubtitleFile& file, const Television::Shown& shown) {
    if (file.vobSub() != nullptr) return shown.box;
    const PictureArea& area = shown.area;  // as the plug-in says: it may draw by itself
    return {area.u16X, area.u16Y, area.u16Width, area.u16Height};
}

std::string sizeText(int width, int height) { return std::to_string(width) + "x" + std::to_string(height); }

Json boxJson(const Box& box) { return {{"x", box.left}, {"y", box.top}, {"width", box.width}, {"height", box.height}}; }

}  // namespace vxsub
