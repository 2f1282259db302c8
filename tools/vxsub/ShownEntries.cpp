#include "ShownEntries.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "Errors.h"
#include "Stage.h"
#include "Text.h"
#include "tools/meant/SystemEncodings.h"
#include "tools/meant/Utf8.h"

namespace vxsub {
namespace {

using namespace android;

[[noreturn]] void failReading(const std::string& path, const char* reason) { throw FileError(path + ": " + reason); }

/// Decodes texts of one file.
class TextDecoder {
public:
    explicit TextDecoder(const meant::Encoding& encoding) {
        const bool isUnicode = encoding.name.compare(0, 4, "UTF-") == 0;
        if (!isUnicode && encoding.name != "ASCII") mDecode = meant::systemEncodings().open(encoding.name);
    }

    std::string decode(const Units& units) const {
        if (units.wide) return encodeUtf8(decodeUtf16(units.values));
        std::string bytes(units.values.size(), 0);
        std::transform(units.values.begin(), units.values.end(), bytes.begin(),
                       [](U16 unit) { return char(U8(unit)); });
        if (!mDecode) return meant::isAscii(bytes) ? bytes : encodeUtf8(decodeUtf8(bytes));
        std::string text;
        mDecode(bytes, &text);
        return text;
    }

private:
    meant::Encodings::Decode mDecode;  ///< none for UTF-8
};

std::vector<check::ShownEntry> entriesOf(SubtitleFile& file, const TextDecoder& decoder) {
    std::vector<check::ShownEntry> entries(file.count());
    for (U32 i = 0; i < file.count(); ++i) {
        const Entry entry = file.entry(i);
        entries[i].start = entry.start;
        if (!entry.isOpen()) entries[i].end = entry.end;
        entries[i].text = decoder.decode(file.units(i));
    }
    return entries;
}

}  // namespace

std::string readFile(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) failReading(path, strerror(errno));
    struct stat status = {};
    const bool isRegular = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
    std::string bytes(isRegular ? size_t(status.st_size) : 0, '\0');
    size_t size = 0;
    ssize_t taken = 0;
    while (size < bytes.size() && (taken = read(fd, &bytes[size], bytes.size() - size)) > 0) size += size_t(taken);
    const int error = taken < 0 ? errno : 0;
    close(fd);
    if (!isRegular) failReading(path, S_ISDIR(status.st_mode) ? "is a directory" : "is not a regular file");
    if (error != 0) failReading(path, strerror(error));
    bytes.resize(size);
    return bytes;
}

meant::Options meantOptions(const OpenOptions& options, const std::string& encoding) {
    constexpr U32 kThousand = 1000;
    meant::Options result;
    const std::string_view extension = extensionOf(options.path);
    result.ending = extension.substr(std::min<size_t>(extension.size(), 1));
    result.encoding = encoding;
    const U32 rate = options.frameRate.value_or(0);
    result.rateThousandths = rate < kThousand ? rate * kThousand : rate;
    return result;
}

std::string encodingOf(const NativeCharset& native) {
    const std::string option = native.option;
    return option.compare(0, 4, "8859") == 0 ? "ISO-" + option : option;
}

ShownFile openShown(const OpenOptions& options, const meant::Encoding& encoding) {
    ShownFile result;
    OpenOptions plain = options;
    plain.raw = false;
    plain.quiet = true;
    std::shared_ptr<SubtitleFile> file;
    try {
        file = std::make_shared<SubtitleFile>(plain);
    } catch (const FileError& error) {
        result.refusal = error.what();
        return result;
    }
    result.type = file->type();
    result.codeType = file->codeType();
    result.shown.isAccepted = true;
    enter(Stage::Texts);
    result.shown.entries = entriesOf(*file, TextDecoder(encoding));
    result.shown.at = [file](check::Ms time) -> std::optional<size_t> {
        const check::Ms clamped = std::clamp<check::Ms>(time, 0, Entry::kOpenEnd);
        const std::optional<U32> index = file->entryShownAt(U32(clamped));
        return index ? std::optional<size_t>(*index) : std::nullopt;
    };
    return result;
}

}  // namespace vxsub
