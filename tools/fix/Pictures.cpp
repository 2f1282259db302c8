#include "tools/fix/Pictures.h"

namespace fix {
namespace {

using vobsub::Picture;
using vobsub::Run;

void countRow(const Picture& picture, const std::vector<Run>& row, Usage* usage) {
    const auto isUnseen = [&](size_t run) { return run >= row.size() || !picture.isVisible(row[run].code); };
    for (size_t i = 0; i < row.size(); ++i) {
        usage->pixels[row[i].code] += static_cast<uint64_t>(row[i].length);
        if (isUnseen(i)) continue;
        const uint64_t sides = isUnseen(i - 1) + isUnseen(i + 1);
        usage->atEdge[row[i].code] += row[i].length == 1 && sides == 2 ? 1 : sides;
    }
}

}  // namespace

std::optional<Picture> pictureAt(std::string_view stream, uint64_t position) {
    constexpr size_t kSmallest = 8;
    Picture picture = vobsub::pictureAt(stream, position);
    if (picture.unit.bytes.size() < kSmallest || picture.width() <= 0 || picture.height() <= 1) return std::nullopt;
    return picture;
}

Usage usageOf(const Picture& picture) {
    Usage usage;
    for (size_t field = 0; field < 2; ++field) {
        vobsub::Rows rows(picture, field);
        while (!rows.atEnd()) {
            std::vector<Run> row = rows.take(picture.width());
            int left = picture.width();
            for (const Run& run : row) left -= run.length;
            if (left > 0) row.push_back({0, left});  // the unit has ended before it
            countRow(picture, row, &usage);
        }
    }
    return usage;
}

}  // namespace fix
