/// A file's lines, counted as the findings count them, and decoded when they are looked at.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/meant/Meant.h"
#include "tools/vxsub/SubtitleFile.h"

namespace page {

class SourceLines {
public:
    /// Throws `FileError`.
    explicit SourceLines(const vxsub::OpenOptions& options);

    struct Line {
        size_t number;  ///< from 1
        size_t offset, length;
        std::string text;
        const char* ending;
    };

    const meant::Encoding& encoding() const { return mEncoding; }
    size_t count() const { return mStarts.size() - 1; }

    std::vector<Line> lines(size_t from, size_t count) const;

    /// The number of the line that a byte belongs to.
    size_t lineAt(size_t offset) const;

private:
    void index(std::string_view all, size_t mark);
    std::string bytes(size_t from, size_t end) const;

    std::string mPath;
    meant::Encoding mEncoding;
    std::vector<uint32_t> mStarts;  ///< of every line, and the file's end
};

}  // namespace page
