#include "Json.h"

namespace vxsub {

using android::U32;

std::string toText(const Json& value) { return value.dump(-1, ' ', false, Json::error_handler_t::replace); }

Json headOf(const SubtitleFile& file) {
    return {{"file", file.path()}, {"format", nameOf(file.type()).word}, {"encoding", nameOf(file.codeType()).word}};
}

Json timesOf(SubtitleFile& file, U32 index) {
    const Entry entry = file.entry(index);
    Json value = {{"index", index}, {"start", entry.start}, {"end", entry.end}};
    if (entry.isOpen()) value["end"] = nullptr;
    if (!file.hasPictures()) return value;
    const U32 track = file.trackOf(index);
    value["track"] = track;
    value["language"] = nameOf(file.tracks()[track].language).word;
    return value;
}

}  // namespace vxsub
