/// A copy as the library shows it.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "tools/check/Compare.h"
#include "tools/fix/Fix.h"
#include "tools/vxsub/ShownEntries.h"

namespace fix {

/// Puts files into a folder of its own, in which the library opens them.
class Folder {
public:
    Folder() {
        if (mkdtemp(mPath.data()) == nullptr) abort();
    }
    ~Folder() {
        for (const std::string& path : mFiles) unlink(path.c_str());
        rmdir(mPath.c_str());
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string put(const std::string& name, const std::string& bytes) {
        const std::string path = mPath + "/" + name;
        FILE* const file = fopen(path.c_str(), "wb");
        if (file == nullptr) abort();
        fwrite(bytes.data(), 1, bytes.size(), file);
        fclose(file);
        mFiles.push_back(path);
        return path;
    }

private:
    std::string mPath = "/tmp/fix_test.XXXXXX";
    std::vector<std::string> mFiles;
};

struct Seen {
    bool isAccepted = false;
    size_t right = 0;  ///< pieces
    size_t odd = 0;    ///< pieces with a code for their line breaks
    size_t others = 0;
    std::string list;  ///< those texts
};

/// How much of it is shown as it was written.
inline Seen seen(Folder& folder, const Result& result) {
    vxsub::OpenOptions options;
    const std::string endings = meant::nameOf(result.format).endings;
    options.path = folder.put("a." + endings.substr(0, endings.find(' ')), result.bytes);
    meant::Encoding utf8;
    utf8.name = "UTF-8";
    const check::Shown shown = vxsub::openShown(options, utf8).shown;
    meant::File plan;
    for (const Piece& piece : result.pieces) {
        meant::Entry entry;
        entry.start = piece.start;
        entry.end = piece.end;
        entry.text = piece.text;
        plan.entries.push_back(entry);
    }
    const check::Comparison comparison = check::compare(plan, shown);
    Seen seen{shown.isAccepted, comparison.right, 0, 0, ""};
    for (const check::Difference& difference : comparison.differences) {
        const bool isOdd = difference.verdict == check::Verdict::Odd;
        ++(isOdd ? seen.odd : seen.others);
        if (isOdd) continue;
        seen.list += (difference.entry != nullptr ? difference.entry->text : "nothing") + " => " +
                     (difference.shown != nullptr ? difference.shown->text : "nothing") + "\n";
    }
    return seen;
}

}  // namespace fix
