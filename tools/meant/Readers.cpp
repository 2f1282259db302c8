#include "tools/meant/Readers.h"

#include <algorithm>

#include "tools/meant/Scan.h"

namespace meant {

Ms timeOfFrame(int64_t frame, uint32_t rateThousandths) {
    const int64_t rate = rateThousandths;
    return (frame * 1000000 + rate / 2) / rate;
}

std::string_view textFrom(std::string_view begin, const Source& source, size_t last) {
    const std::string_view line = source.lines()[last - 1];
    return {begin.data(), static_cast<size_t>(line.data() + line.size() - begin.data())};
}

std::string_view textOf(const Source& source, size_t first, size_t last) {
    return first < last ? textFrom(source.lines()[first], source, last) : std::string_view();
}

Entry entryAt(const Source& source, size_t first, size_t last) {
    const std::vector<std::string_view>& lines = source.lines();
    const std::string_view text = source.text();
    Entry entry;
    entry.place = source.placeOf(lines[first].data());
    entry.behind = source.placeOf(last < lines.size() ? lines[last].data() : text.data() + text.size()).offset;
    return entry;
}

Entry entryAt(const Source& source, size_t first, size_t last, Ms start, Ms end) {
    Entry entry = entryAt(source, first, last);
    entry.start = start;
    entry.end = end;
    entry.endFrom = End::Given;
    return entry;
}

void appendLines(const std::string& lines, std::string* text) {
    if (!text->empty() && !lines.empty()) *text += '\n';
    *text += lines;
}

void add(Entry entry, File* file) {
    if (entry.unseen == Unseen::No && entry.text.empty()) entry.unseen = Unseen::Empty;
    (entry.unseen == Unseen::No ? file->entries : file->unseen).push_back(std::move(entry));
}

void endAtNext(const std::vector<Entry*>& inOrder) {
    const Entry* next = nullptr;
    for (auto i = inOrder.rbegin(); i != inOrder.rend(); next = *i++) {
        Entry& entry = **i;
        if (entry.endFrom == End::Given) continue;
        entry.end = entry.start;
        entry.endFrom = End::Open;
        if (next == nullptr) continue;
        if (next->start == entry.start) {
            entry.end = next->end;
            entry.endFrom = next->endFrom;
        } else if (next->start > entry.start) {
            entry.end = next->start;
            entry.endFrom = next->text.empty() ? End::Given : End::Next;
        }
    }
}

void addEndingAtNext(std::vector<Entry> entries, File* file) {
    std::vector<Entry*> inOrder;
    inOrder.reserve(entries.size());
    for (Entry& entry : entries) inOrder.push_back(&entry);
    endAtNext(inOrder);
    for (Entry& entry : entries) add(std::move(entry), file);
}

std::string delayIn(const Source& source, size_t headerLines) {
    const std::vector<std::string_view>& lines = source.lines();
    for (size_t i = 0; i < headerLines; ++i) {
        Scan in(trimmed(lines[i]));
        if (!in.eat("[DELAY]")) continue;
        const std::string_view here = trimmed(in.rest());
        const std::string_view delay = here.empty() && i + 1 < headerLines ? trimmed(lines[i + 1]) : here;
        const bool isZero = delay.find_first_of("123456789") == delay.npos;
        return isZero ? "" : std::string(delay);
    }
    return {};
}

}  // namespace meant
