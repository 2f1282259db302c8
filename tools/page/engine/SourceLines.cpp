#include "SourceLines.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "tools/meant/Detection.h"
#include "tools/meant/Source.h"
#include "tools/meant/SystemEncodings.h"
#include "tools/vxsub/ShownEntries.h"

namespace page {
namespace {

/// A file's units by number: where the lowest byte of each lies, the others are 0 in a line end.
struct Units {
    std::string_view bytes;
    size_t width, low;

    size_t size() const { return bytes.size() / width; }
    char at(size_t i) const {
        const char c = bytes[i * width + low];
        return width == 1 || (c != '\r' && c != '\n') || isAlone(i) ? c : '\0';
    }
    bool isAlone(size_t i) const {
        size_t others = 0;
        for (size_t k = 0; k < width; ++k) others += k != low && bytes[i * width + k] != 0;
        return others == 0;
    }
};

Units unitsOf(std::string_view bytes, const std::string& encoding) {
    if (encoding == "UTF-16LE") return {bytes, 2, 0};
    if (encoding == "UTF-16BE") return {bytes, 2, 1};
    if (encoding == "UTF-32LE") return {bytes, 4, 0};
    if (encoding == "UTF-32BE") return {bytes, 4, 3};
    return {bytes, 1, 0};
}

const char* endingOf(std::string bytes) {
    bytes.erase(std::remove(bytes.begin(), bytes.end(), '\0'), bytes.end());
    const auto last = [&](size_t n) { return n <= bytes.size() ? bytes[bytes.size() - n] : '\0'; };
    if (last(1) == '\n') return last(2) == '\r' ? "CR LF" : "LF";
    return last(1) == '\r' ? "CR" : "";
}

}  // namespace

SourceLines::SourceLines(const vxsub::OpenOptions& options) : mPath(options.path) {
    const std::string all = vxsub::readFile(mPath);
    const std::string chosen = options.native != nullptr ? vxsub::encodingOf(*options.native) : "";
    const meant::Detected found =
        meant::detectEncoding(all, vxsub::meantOptions(options, chosen), meant::systemEncodings());
    mEncoding = found.encoding;
    index(all, found.markSize);
    if (mStarts.back() < all.size()) mStarts.push_back(uint32_t(all.size()));
}

/// CR LF is one end, and so are several CR before one LF.
void SourceLines::index(std::string_view all, size_t mark) {
    const Units units = unitsOf(all, mEncoding.name);
    mStarts.push_back(uint32_t(mark));
    for (size_t i = mark / units.width; i < units.size();) {
        size_t end = i;
        while (end < units.size() && units.at(end) == '\r') ++end;
        if (end < units.size() && units.at(end) == '\n') {
            i = end + 1;
            mStarts.push_back(uint32_t(i * units.width));
        } else if (end == i) {
            ++i;
        } else {
            while (i < end) mStarts.push_back(uint32_t(++i * units.width));
        }
    }
}

std::string SourceLines::bytes(size_t from, size_t end) const {
    std::string bytes(end - from, '\0');
    const int fd = open(mPath.c_str(), O_RDONLY);
    const ssize_t size = pread(fd, bytes.data(), bytes.size(), off_t(from));
    close(fd);
    bytes.resize(size_t(std::max<ssize_t>(size, 0)));
    return bytes;
}

std::vector<SourceLines::Line> SourceLines::lines(size_t from, size_t number) const {
    std::vector<Line> lines;
    meant::Options options;
    options.encoding = mEncoding.name == "ASCII" ? "UTF-8" : mEncoding.name;
    for (size_t i = std::max<size_t>(from, 1) - 1; i < count() && i + 1 - from < number; ++i) {
        const std::string raw = bytes(mStarts[i], mStarts[i + 1]);
        const meant::Source source(raw, options, meant::systemEncodings());
        const std::string_view text = source.lines().empty() ? std::string_view() : source.lines().front();
        lines.push_back({i + 1, mStarts[i], raw.size(), std::string(text), endingOf(raw)});
    }
    return lines;
}

size_t SourceLines::lineAt(size_t offset) const {
    const auto next = std::upper_bound(mStarts.begin(), mStarts.end() - 1, offset);
    return std::max<size_t>(1, size_t(next - mStarts.begin()));
}

}  // namespace page
