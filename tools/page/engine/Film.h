/// A file that was dropped on the page: what the library shows of it, and its source.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Arrays.h"
#include "LogLines.h"
#include "SourceLines.h"
#include "Texts.h"
#include "tools/vxsub/Viewer.h"

namespace page {

using android::U32;

class Film {
public:
    /// The file lies in `folder`, alone but for the other half of a pair. Opens it with the library; a refusal is kept
    /// as a reason, and the source is there all the same.
    Film(const std::string& folder, const vxsub::OpenOptions& options, vxsub::Size surface);

    /// What calls on a file answer; of a refused one `facts` alone, and what is about its source.
    Json facts(Arrays& arrays);
    Json texts(U32 from, U32 count);
    Json entry(U32 index, Arrays& arrays);
    Json search(const std::string& words, Arrays& arrays);
    Json at(U32 track, U32 ms);
    Json picture(U32 index, Arrays& arrays);

    /// What the library logged when the file was opened, and when it showed the entry that `at` named last.
    Json log() const;

    Json sourceFacts();
    Json lines(size_t from, size_t count);
    size_t lineAt(size_t offset);

private:
    void open();
    template <class Use>
    void look(U32 index, Use use);
    std::optional<vxsub::Television::Shown> draw(U32 index);
    void enter() const;
    vxsub::SubtitleFile& file() const;
    void gatherTables();
    Json tracks() const;
    Json vobSub() const;
    std::vector<U32> extents() const;
    std::string row(U32 index);
    SourceLines& source();

    std::string mFolder;
    vxsub::OpenOptions mOptions;
    vxsub::Size mSurface;
    std::string mRefusal;
    LogLines mOpeningLog, mShowingLog;
    std::optional<U32> mShown;  ///< by the last answer to `at`
    std::unique_ptr<vxsub::SubtitleFile> mFile;
    std::unique_ptr<vxsub::Viewer> mViewer;
    std::vector<U32> mStarts, mEnds, mOffsets, mLengths;
    std::vector<uint8_t> mMarks;
    std::vector<std::string> mRows;  ///< of pictures, once they were asked for
    std::optional<Texts> mTexts;     ///< once something was searched
    std::optional<SourceLines> mSource;
};

}  // namespace page
