#include "tools/fix/Script.h"

#include <algorithm>
#include <map>

#include "tools/fix/Times.h"
#include "tools/meant/Scan.h"

namespace fix {
namespace {

using meant::Scan;
using meant::trimmed;

/// The usual fields, what stands in them when the script has none, and other names of them.
constexpr struct {
    const char* name;
    const char* usual;
} kFields[] = {
    {"Layer", "0"},   {"Start", ""},    {"End", ""},      {"Style", "Default"}, {"Name", ""},
    {"MarginL", "0"}, {"MarginR", "0"}, {"MarginV", "0"}, {"Effect", ""},       {"Text", ""},
};

constexpr char kFormatLine[] = "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text";

std::string knownName(std::string_view name) {
    if (meant::sameWord(name, "Marked")) return "Layer";
    if (meant::sameWord(name, "Actor")) return "Name";
    for (const auto& field : kFields)
        if (meant::sameWord(name, field.name)) return field.name;
    return std::string(name);
}

/// The names in a Format line of events; none in another line.
std::vector<std::string> namesIn(std::string_view line) {
    Scan in(trimmed(line));
    if (!in.eat("Format:")) return {};
    std::vector<std::string> names;
    for (std::string_view rest = in.rest(); !rest.empty();) {
        const size_t comma = std::min(rest.find(','), rest.size());
        names.push_back(knownName(trimmed(rest.substr(0, comma))));
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
    const bool isOfEvents = std::find(names.begin(), names.end(), "Text") != names.end();
    return isOfEvents ? names : std::vector<std::string>();
}

std::vector<std::string> usualNames() {
    std::vector<std::string> names;
    for (const auto& field : kFields) names.push_back(field.name);
    return names;
}

/// An event with its fields under their names; the text has all that is left.
std::map<std::string, std::string> fieldsOf(std::string_view line, const std::vector<std::string>& names) {
    std::map<std::string, std::string> fields;
    for (const std::string& name : names) {
        const bool isText = name == "Text";
        const size_t comma = isText ? line.size() : std::min(line.find(','), line.size());
        fields[name] = std::string(isText ? line : trimmed(line.substr(0, comma)));
        line.remove_prefix(std::min(comma + 1, line.size()));
        if (isText) break;
    }
    return fields;
}

/// The text keeps its codes, but for those that the library would show: \N stays the one for a line break.
std::string textOf(const std::string& raw) { return replaced(replaced(raw, "\\n", "\\N"), "\\h", " "); }

class Script {
public:
    Script(const meant::File& file, const meant::Source& source) : mFile(file), mSource(source) {}

    std::string mend(std::vector<Piece>* pieces) {
        takeLines();
        std::stable_sort(mEvents.begin(), mEvents.end(),
                         [&](const Event& a, const Event& b) { return startOf(a) < startOf(b); });
        std::string text = "\xEF\xBB\xBF" + mHead;
        if (!mHasFormat) text += std::string("[Events]\r\n") + kFormatLine + "\r\n";
        for (const Event& event : mEvents) {
            const meant::Entry& entry = mFile.entries[event.entry];
            pieces->push_back({entry.start, entry.end, entry.text, {event.entry}});
            text += event.line + "\r\n";
        }
        return text + mTail;
    }

private:
    struct Event {
        std::string line;
        size_t entry;
    };

    Ms startOf(const Event& event) const { return mFile.entries[event.entry].start; }

    void takeLines() {
        std::map<size_t, size_t> entries;  // by line
        for (size_t i = 0; i < mFile.entries.size(); ++i) entries[mFile.entries[i].place.line] = i;
        std::vector<std::string> names = usualNames();
        const std::vector<std::string_view>& lines = mSource.lines();
        for (size_t i = 0; i < lines.size(); ++i) {
            const std::vector<std::string> given = namesIn(lines[i]);
            const auto entry = entries.find(mSource.placeOf(lines[i].data()).line);
            if (!given.empty()) {
                names = given;
                if (!mHasFormat) mHead += std::string(kFormatLine) + "\r\n";
                mHasFormat = true;
            } else if (entry != entries.end()) {
                addEvent(lines[i], names, entry->second);
            } else if (!Scan(trimmed(lines[i])).eat("Dialogue:")) {
                (mEvents.empty() ? mHead : mTail) += std::string(trimmed(lines[i])) + "\r\n";
            }
        }
    }

    void addEvent(std::string_view line, const std::vector<std::string>& names, size_t index) {
        const meant::Entry& entry = mFile.entries[index];
        Scan in(trimmed(line));
        in.eat("Dialogue:");
        std::map<std::string, std::string> fields = fieldsOf(in.rest(), names);
        if (fields["Text"].empty()) fields = fieldsOf(in.rest(), usualNames());
        const char* const format = "%d:%02d:%02d.";
        const auto time = [&](Ms ms) {
            const std::string hundredths = std::to_string(100 + std::max<Ms>(ms, 0) / 10 % 100).substr(1);
            return timeText(format, std::max<Ms>(ms, 0)) + hundredths;
        };
        fields["Start"] = time(entry.start);
        fields["End"] = time(entry.end);
        fields["Text"] = textOf(fields["Text"]);
        std::string event = "Dialogue: ";
        for (const auto& field : kFields) {
            const auto given = fields.find(field.name);
            const bool isGiven = given != fields.end() && !given->second.empty();
            event += (&field == kFields ? "" : ",") + (isGiven ? given->second : std::string(field.usual));
        }
        mEvents.push_back({event, index});
    }

    const meant::File& mFile;
    const meant::Source& mSource;
    std::vector<Event> mEvents;
    std::string mHead, mTail;
    bool mHasFormat = false;
};

}  // namespace

std::string mendScript(const meant::File& file, const meant::Source& source, std::vector<Piece>* pieces) {
    return Script(file, source).mend(pieces);
}

}  // namespace fix
