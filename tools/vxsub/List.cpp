// vxsub list: all entries, for people or for programs.
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Text.h"
#include "Time.h"

namespace vxsub {
namespace {

using namespace android;
using Json = nlohmann::ordered_json;

struct MarkKind {
    bool Marks::*isSet;
    char letter;          ///< in front of the times
    const char* word;     ///< in JSON
    const char* meaning;  ///< below the list
};
constexpr MarkKind kMarkKinds[] = {
    {&Marks::sharesStart, '=', "shares-start", "shares its start with another entry: the library may name either"},
    {&Marks::backInTime, '<', "back-in-time",
     "starts before the entry in front of it: the library expects starts to ascend"},
    {&Marks::endsBeforeStart, '!', "ends-before-start", "ends before it starts: it is never shown"},
};

std::string toText(const Json& value) { return value.dump(-1, ' ', false, Json::error_handler_t::replace); }

class TextList {
public:
    TextList(SubtitleFile& file, Output& out) : mFile(file), mOut(out) {}

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
        line += ' ';
        for (const MarkKind& kind : kMarkKinds) {
            line += marks.*kind.isSet ? kind.letter : ' ';
            mUsed.*kind.isSet |= marks.*kind.isSet;
        }
        line += ' ' + formatSpan(entry);
        const std::string text = escapeLine(mFile.text(index));
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
    SubtitleFile& mFile;
    Output& mOut;
    std::string mSeparator;
    Marks mUsed = {false, false, false};
};

/// One object; its entries stand one on a line.
class JsonList {
public:
    JsonList(SubtitleFile& file, Output& out, bool raw) : mFile(file), mOut(out), mRaw(raw) {}

    void begin() {
        std::string head = toText({{"file", mFile.path()},
                                   {"format", nameOf(mFile.type()).word},
                                   {"encoding", nameOf(mFile.codeType()).word}});
        head.back() = ',';  // in place of the closing brace
        mOut.write(head + "\"entries\":[");
    }

    void beginTrack(U32 number) { mTrack = number; }

    void put(U32 index, const Entry& entry, const Marks& marks) {
        Json value = {{"index", index}, {"start", entry.start}, {"end", entry.end}};
        if (entry.isOpen()) value["end"] = nullptr;
        if (mFile.hasPictures())
            putPicture(index, &value);
        else
            putText(index, &value);
        Json& words = value["marks"] = Json::array();
        for (const MarkKind& kind : kMarkKinds)
            if (marks.*kind.isSet) words.push_back(kind.word);
        mOut.write((mIsFirst ? "\n" : ",\n") + toText(value));
        mIsFirst = false;
    }

    void end() { mOut.line(mIsFirst ? "]}" : "\n]}"); }

private:
    void putText(U32 index, Json* value) {
        const Units units = mFile.units(index);
        (*value)["text"] = encodeUtf8(mFile.text(units));
        if (mRaw) (*value)["units"] = units.values;
    }

    void putPicture(U32 index, Json* value) {
        (*value)["track"] = mTrack;
        (*value)["language"] = nameOf(mFile.tracks()[mTrack].language).word;
        Json& picture = (*value)["picture"] = nullptr;
        if (const std::optional<PictureArea> area = mFile.picture(index))
            picture = {{"x", area->u16X}, {"y", area->u16Y}, {"width", area->u16Width}, {"height", area->u16Height}};
    }

    SubtitleFile& mFile;
    Output& mOut;
    bool mRaw;
    U32 mTrack = 0;
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
    command->footer(
        "One entry on a line: index (from 0, as the library counts), marks, start, end,\n"
        "text. Control characters in a text show as \\n, \\t, \\0, \\x1b and the like, a\n"
        "backslash as \\\\, and what is no text in its encoding as U+FFFD.\n\n"
        "Marks:\n"
        "  =  shares its start with another entry: the library may name either\n"
        "  <  starts before the entry in front of it: the library expects starts to ascend\n"
        "  !  ends before it starts: it is never shown\n\n"
        "With --json, one object:\n"
        "  {\"file\", \"format\", \"encoding\",\n"
        "   \"entries\": [{\"index\", \"start\", \"end\", \"text\", \"marks\"}, ...]}\n"
        "Times are milliseconds, marks are the words shares-start, back-in-time and\n"
        "ends-before-start. --raw adds \"units\", the numbers of all bytes or UTF-16 units.\n"
        "Entries of files with pictures have \"track\", \"language\" and \"picture\": {\"x\", \"y\",\n"
        "\"width\", \"height\"} instead of a text, null when it cannot be decoded; \"end\" is null\n"
        "when the picture stays until the next.\n\n"
        "Examples:  vxsub list movie.srt\n"
        "           vxsub list --json movie.srt | jq '.entries[].text'");
    addFileArgument(*command, session);
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "write JSON instead of lines for people");
    addTrackOption(*command, session, "only that track of a file that has several");
    addRawOption(*command, session);
    command->callback([json, &session] {
        session.run = [json, &session] {
            SubtitleFile file(session.file);
            if (*json)
                listAll(file, JsonList(file, session.out, session.file.raw));
            else
                listAll(file, TextList(file, session.out));
        };
    });
}

}  // namespace vxsub
