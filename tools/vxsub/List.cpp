// vxsub list: all entries, for people or for programs.
#include "Commands.h"
#include "PictureOptions.h"
#include "Text.h"
#include "Time.h"
#include "Viewer.h"

namespace vxsub {
namespace {

using namespace android;

class TextList {
public:
    TextList(SubtitleFile& file, Viewer& viewer, Output& out) : mFile(file), mViewer(viewer), mOut(out) {}

    void begin() {
        if (mFile.count() == 0) mOut.line(printable(mFile.path()) + ": no entries");
    }

    void beginTrack(U32 number) {
        if (mFile.tracks().size() < 2) return;
        mOut.line(mSeparator + "Track " + std::to_string(number) + ": " +
                  nameOf(mFile.tracks()[number].language).phrase);
        mSeparator = "\n";
    }

    void put(U32 index, const Entry& entry, const Marks& marks) {
        std::string line = std::to_string(index);
        if (line.size() < 5) line.insert(0, 5 - line.size(), ' ');
        line += ' ' + lettersOf(marks);
        line += ' ' + formatSpan(entry);
        const std::string text = escapeLine(mViewer.text(index));
        mOut.line(text.empty() ? line : line + "  " + text);
    }

    void end() {
        const char* separator = "\n";
        for (const MarkKind& kind : kMarkKinds) {
            if (!(mUsed.*kind.isSet)) continue;
            mOut.line(separator + std::string(1, kind.letter) + "  " + kind.meaning);
            separator = "";
        }
    }

private:
    std::string lettersOf(const Marks& marks) {
        std::string letters(kMarkColumns, ' ');
        for (const MarkKind& kind : kMarkKinds) {
            if (!(marks.*kind.isSet)) continue;
            letters[kind.column] = kind.letter;
            mUsed.*kind.isSet = true;
        }
        return letters;
    }

    SubtitleFile& mFile;
    Viewer& mViewer;
    Output& mOut;
    std::string mSeparator;
    Marks mUsed = {};
};

/// One object; its entries stand one on a line.
class JsonList {
public:
    JsonList(SubtitleFile& file, Viewer& viewer, Output& out, bool raw)
        : mFile(file), mViewer(viewer), mOut(out), mRaw(raw) {}

    void begin() {
        std::string head = toText(headOf(mFile));
        head.back() = ',';  // in place of the closing brace
        mOut.write(head + "\"entries\":[");
    }

    void beginTrack(U32) {}

    void put(U32 index, const Entry&, const Marks& marks) {
        Json value = mViewer.json(index, mRaw);
        Json& words = value["marks"] = Json::array();
        for (const MarkKind& kind : kMarkKinds)
            if (marks.*kind.isSet) words.push_back(kind.word);
        mOut.write((mIsFirst ? "\n" : ",\n") + toText(value));
        mIsFirst = false;
    }

    void end() { mOut.line(mIsFirst ? "]}" : "\n]}"); }

private:
    SubtitleFile& mFile;
    Viewer& mViewer;
    Output& mOut;
    bool mRaw;
    bool mIsFirst = true;
};

template <class List>
void listAll(SubtitleFile& file, List list) {
    list.begin();
    for (U32 number = 0; number < file.tracks().size(); ++number) {
        if (!file.isChosen(number)) continue;
        const Track& track = file.tracks()[number];
        std::vector<Entry> entries;
        for (U32 i = track.first; i < track.end; ++i) entries.push_back(file.entry(i));
        const std::vector<Marks> marks = marksOf(entries);
        list.beginTrack(number);
        for (size_t i = 0; i < entries.size(); ++i) list.put(track.first + U32(i), entries[i], marks[i]);
    }
    list.end();
}

}  // namespace

void addList(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("list", "List all entries with their times and texts");
    std::string marks;
    for (const MarkKind& kind : kMarkKinds) marks += "  " + std::string(1, kind.letter) + "  " + kind.meaning + "\n";
    command->footer(
        "One entry on a line: index (from 0, as the library counts), marks, start, end, and\n"
        "the text as the player gets it. Control characters in a text show as \\n, \\t, \\0,\n"
        "\\x1b and the like, a backslash as \\\\, and what is no text in its encoding as U+FFFD.\n"
        "Of a picture stands where it is drawn on a television, or why it is not seen.\n\n"
        "Marks:\n" +
        marks +
        "\nWith --json, one object:\n"
        "  {\"file\", \"format\", \"encoding\",\n"
        "   \"entries\": [{\"index\", \"start\", \"end\", \"text\", \"marks\"}, ...]}\n"
        "Times are milliseconds, the encoding is one of the words of \"vxsub info --help\",\n"
        "marks are shares-start, back-in-time, ends-before-start, zero-length and overlap.\n"
        "--raw adds \"units\", the numbers of all bytes or UTF-16 units. Entries of files with\n"
        "pictures have \"track\", \"language\" and \"picture\": {\"x\", \"y\", \"width\", \"height\"}\n"
        "instead of a text, or null and \"why\"; \"end\" is null when the picture stays until\n"
        "the next.\n\n"
        "Examples:  vxsub list movie.srt\n"
        "           vxsub list --json movie.srt | jq '.entries[].text'");
    addFileArgument(*command, session);
    const auto json = std::make_shared<bool>(false);
    const auto surface = std::make_shared<std::optional<Size>>();
    addJsonOption(*command, json.get());
    addTrackOption(*command, session, "only that track of a file that has several");
    addSurfaceOption(*command, surface.get(), kTelevisionSize);
    addRawOption(*command, session);
    command->callback([json, surface, &session] {
        session.run = [json, surface, &session] {
            SubtitleFile file(session.file);
            Viewer viewer(file, *surface);
            if (*json)
                listAll(file, JsonList(file, viewer, session.out, session.file.raw));
            else
                listAll(file, TextList(file, viewer, session.out));
        };
    });
}

}  // namespace vxsub
