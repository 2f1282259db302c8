#include "tools/meant/Meant.h"

#include "tools/meant/Judge.h"
#include "tools/meant/Readers.h"

namespace meant {
namespace {

using Read = void(const Source& source, const Options& options, File* file);

Read* readerOf(Format format) {
    switch (format) {
        case Format::SubRip:
            return readSubRip;
        case Format::SubStationAlpha:
            return readSubStationAlpha;
        case Format::Sami:
            return readSami;
        case Format::TimedText:
            return readTimedText;
        case Format::SubViewer20:
            return readSubViewer20;
        case Format::SubViewer10:
            return readSubViewer10;
        case Format::MicroDvd:
            return readMicroDvd;
        case Format::DvbText:
            return readDvbText;
        default:
            return nullptr;
    }
}

}  // namespace

File read(std::string_view bytes, const Options& options, const Encodings& encodings) {
    File file;
    if (!judgeBytes(bytes, &file.format, &file.nature)) {
        const Source source(bytes, options, encodings);
        file.encoding = source.encoding();
        file.lineEnds = source.lineEnds();
        file.format = judgeText(source, options.ending);
        if (Read* reader = readerOf(file.format)) reader(source, options, &file);
        if (file.format == Format::None) file.nature = natureOf(bytes);
    }
    file.endingMisleads =
        file.format != Format::None && !options.ending.empty() && !isEndingOf(options.ending, file.format);
    return file;
}

}  // namespace meant
