// SubStation Alpha: lines of fields, whose order a Format line gives.
#include <algorithm>

#include "tools/meant/Markup.h"
#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"

namespace meant {
namespace {

/// The numbers of the fields that matter, as the usual Format line has them.
struct Fields {
    size_t start = 1, end = 2, text = 9;
};

/// Events of other kinds are no subtitles, but are none the less no stray lines.
bool eatKind(Scan* in, bool* isDialogue) {
    in->skipBlanks();
    *isDialogue = in->eat("Dialogue:");
    if (*isDialogue) return true;
    for (const char* kind : {"Comment:", "Picture:", "Sound:", "Movie:", "Command:"})
        if (in->eat(kind)) return true;
    return false;
}

/// The fields of a Format line of events, which is the one that names a text.
std::optional<Fields> fieldsOf(std::string_view line) {
    Scan in(trimmed(line));
    if (!in.eat("Format:")) return std::nullopt;
    Fields fields;
    bool hasText = false;
    std::string_view rest = in.rest();
    for (size_t number = 0;; ++number) {
        const size_t comma = rest.find(',');
        const std::string_view name = trimmed(rest.substr(0, comma));
        if (sameWord(name, "Start")) fields.start = number;
        if (sameWord(name, "End")) fields.end = number;
        if (sameWord(name, "Text")) {
            fields.text = number;
            hasText = true;
        }
        if (comma == rest.npos) break;
        rest.remove_prefix(comma + 1);
    }
    return hasText ? std::optional(fields) : std::nullopt;
}

std::optional<Ms> timeOf(std::string_view field) {
    Scan in(trimmed(field));
    const std::optional<Ms> whole = in.eatHms();
    if (!whole) return std::nullopt;
    const Ms fraction = in.eatAny(".,:") != 0 ? in.eatFraction().value_or(0) : 0;
    return *whole < 0 ? *whole - fraction : *whole + fraction;
}

/// Where no Format line is: the usual fields, or, where most events have fewer, as many before the text as all of them
/// have; the times are the first two.
Fields fieldsOfEvents(const std::vector<std::string_view>& lines) {
    const Fields usual;
    Fields fields;
    size_t events = 0, shortOnes = 0;
    for (const std::string_view line : lines) {
        Scan in(line);
        bool isDialogue = false;
        if (!eatKind(&in, &isDialogue) || !isDialogue) continue;
        const auto commas = static_cast<size_t>(std::count(line.begin(), line.end(), ','));
        const bool beginsWithTime = timeOf(in.rest().substr(0, in.rest().find(','))).has_value();
        ++events;
        if (commas >= usual.text || commas < (beginsWithTime ? 2u : 3u)) continue;
        ++shortOnes;
        fields.text = std::min(fields.text, commas);
        fields.start = beginsWithTime ? 0 : 1;
        fields.end = fields.start + 1;
    }
    return shortOnes * 2 > events ? fields : usual;
}

struct Event {
    Ms start, end;
    std::string_view text;
};

/// The fields before the text end at commas; the text has all that is left.
std::optional<Event> eventOf(std::string_view line, const Fields& fields) {
    std::optional<Ms> start, end;
    for (size_t number = 0; number < fields.text; ++number) {
        const size_t comma = line.find(',');
        const std::string_view field = line.substr(0, comma);
        if (number == fields.start) start = timeOf(field);
        if (number == fields.end) end = timeOf(field);
        if (comma == line.npos) break;
        line.remove_prefix(comma + 1);
    }
    if (!start || !end) return std::nullopt;
    return Event{*start, *end, line};
}

bool hasDrawing(std::string_view text) {
    for (size_t at = text.find("\\p"); at != text.npos; at = text.find("\\p", at + 2))
        if (at + 2 < text.size() && text[at + 2] >= '1' && text[at + 2] <= '9') return true;
    return false;
}

void setText(std::string_view text, bool isDialogue, Entry* entry) {
    Markup markup;
    markup.braces = Markup::Braces::All;
    markup.backslashes = true;
    markup.drawings = true;
    entry->text = plainText(text, markup);
    if (!isDialogue) {
        entry->unseen = Unseen::Comment;
    } else if (entry->text.empty() && hasDrawing(text)) {
        entry->unseen = Unseen::Drawing;
    }
}

}  // namespace

bool is::subStationEvent(std::string_view line) {
    Scan in(line);
    in.skipBlanks();
    if (!in.eat("Dialogue:")) return false;
    return in.rest().find(',') != line.npos;
}

void readSubStationAlpha(const Source& source, const Options&, File* file) {
    const std::vector<std::string_view>& lines = source.lines();
    const bool hasFormat =
        std::any_of(lines.begin(), lines.end(), [](auto line) { return fieldsOf(line).has_value(); });
    Fields fields = hasFormat ? Fields() : fieldsOfEvents(lines);
    for (size_t i = 0; i < lines.size(); ++i) {
        if (const std::optional<Fields> given = fieldsOf(lines[i])) fields = *given;
        Scan in(lines[i]);
        bool isDialogue = false;
        if (!eatKind(&in, &isDialogue)) continue;
        std::optional<Event> event = eventOf(in.rest(), fields);
        if (!event) event = eventOf(in.rest(), Fields());
        if (event) {
            Entry entry = entryAt(source, i, i + 1, event->start, event->end);
            setText(event->text, isDialogue, &entry);
            add(std::move(entry), file);
        } else if (isDialogue) {
            file->strayLines.push_back(source.placeOf(lines[i].data()));
        }
    }
}

}  // namespace meant
