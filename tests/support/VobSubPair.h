/// VobSub pairs for tests and fuzz targets: on disk under one name, or in memory.
#pragma once

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "subtitle/SubtitleParserSUBIDX.h"

namespace test {

/// Two files in a folder of their own, removed at the end.
class VobSubPair {
public:
    VobSubPair(const std::string& idx, const std::string& sub, const char* idxName = "movie.idx",
               const char* subName = "movie.sub") {
        char folder[] = "/tmp/vobsub-XXXXXX";
        if (mkdtemp(folder) == nullptr) abort();
        mFolder = folder;
        mIdx = mFolder + "/" + idxName;
        mSub = mFolder + "/" + subName;
        write(mIdx, idx);
        write(mSub, sub);
    }
    VobSubPair(const VobSubPair&) = delete;
    VobSubPair& operator=(const VobSubPair&) = delete;
    ~VobSubPair() {
        unlink(mIdx.c_str());
        unlink(mSub.c_str());
        rmdir(mFolder.c_str());
    }

    char* path() { return &mIdx[0]; }
    const std::string& idx() const { return mIdx; }
    const std::string& sub() const { return mSub; }

private:
    static void write(const std::string& path, const std::string& content) {
        FILE* const file = fopen(path.c_str(), "wb");
        if (file == nullptr) abort();
        fwrite(content.data(), 1, content.size(), file);
        fclose(file);
    }

    std::string mFolder, mIdx, mSub;
};

/// A parser whose files are streams over memory. `load` scans on the calling thread; no file, no worker.
class VobSubInMemory {
public:
    VobSubInMemory() : parser(-1, -1, 0, 0) {}

    void load(const std::string& idx, const std::string& sub) {
        mIdx = idx;
        mSub = sub;
        reopen(&parser.fpIdx, mIdx, &parser.m_s64DataTotalSize);
        reopen(&parser.fpSub, mSub, &parser.m_s64DataTotalSizeSub);
        parser.m_vPrivateTrackInfo.clear();
        parser.m_u32TagNum = 0;
        parser.m_u32SubtitleBufferDataSize = 0;
        parser.m_s64SubtitleBufferPosition = 0;
        parser.bParseFinish = android::FALSE;
        parser.ParserThread();
    }

    android::SubtitleParserSUBIDX parser;

private:
    static void reopen(FILE** file, std::string& content, android::S64* size) {
        if (*file != nullptr) fclose(*file);
        *size = static_cast<android::S64>(content.size());
        content.push_back('\0');  // an empty text has an address, too
        *file = fmemopen(&content[0], content.size() - 1, "rb");
    }

    std::string mIdx, mSub;
};

}  // namespace test
