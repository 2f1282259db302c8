#include "tools/meant/Markup.h"

#include <algorithm>
#include <iterator>

#include "tools/meant/Entities.h"
#include "tools/meant/Scan.h"
#include "tools/meant/Utf8.h"

namespace meant {
namespace {

/// An element's name, and what stands behind that.
struct Element {
    std::string_view name, rest;
    bool isIndented = false;  ///< a blank stands in front of the name
};

/// Finds where groups end, or that they do not. What was found serves for all that begins before it, so a text takes
/// linear time.
class Closer {
public:
    Closer(char close, std::string_view bars) : mClose(close), mStops(bars) { mStops += close; }

    /// The size of what stands from `text`, which begins with the opening bracket, to the closing one; 0 when a bar
    /// comes first, or nothing.
    size_t sizeOfGroup(std::string_view text) {
        if (mNext <= text.data()) mNext = text.data() + std::min(text.find_first_of(mStops, 1), text.size());
        const size_t size = static_cast<size_t>(mNext - text.data());
        return size < text.size() && *mNext == mClose ? size + 1 : 0;
    }

private:
    char mClose;
    std::string mStops;
    const char* mNext = nullptr;
};

Element elementOf(std::string_view tag) {
    const bool isIndented = isBlank(tag[1]);
    std::string_view inner = trimmed(tag.substr(1, tag.size() - 2));
    const bool isClosing = !inner.empty() && (inner.front() == '/' || inner.front() == '\\');
    if (isClosing) inner = trimmed(inner.substr(1));
    size_t end = 0;
    while (end < inner.size() && (isLetter(inner[end]) || isDigit(inner[end]))) ++end;
    return {inner.substr(0, end), trimmed(inner.substr(end)), isIndented && !isClosing};
}

template <class Names>
bool isAmong(std::string_view name, const Names& names) {
    return std::any_of(std::begin(names), std::end(names), [name](const char* known) { return sameWord(name, known); });
}

/// "<and>" is text where markup is no more than a habit; "<i>" is not.
bool isKnown(const Element& element) {
    static const char* const kBare[] = {"i",  "b",  "u",  "s",   "em",    "strong", "strike", "del", "br",
                                        "rt", "rp", "tt", "big", "small", "sub",    "sup",    "a"};
    static const char* const kWithValues[] = {"font", "span", "p", "div", "ruby", "center", "c", "v"};
    const bool hasWords = !element.rest.empty() && element.rest != "/" && element.rest.find('=') == element.rest.npos;
    static const char* const kIndented[] = {"i", "font"};  // "a < b > c" may be anything
    if (element.isIndented && !isAmong(element.name, kIndented)) return false;
    if (!hasWords && isAmong(element.name, kBare)) return true;
    return isAmong(element.name, kWithValues);
}

/// {y:i}, {C:$0000ff}
bool isMicroDvdCode(std::string_view group) {
    constexpr std::string_view kCodes = "ycfspoh";
    return group.size() >= 4 && kCodes.find(lower(group[1])) != kCodes.npos && group[2] == ':';
}

/// {i}, {/B}
bool isStyleCode(std::string_view group) {
    std::string_view inner = group.substr(1, group.size() - 2);
    if (!inner.empty() && inner.front() == '/') inner.remove_prefix(1);
    return inner.size() == 1 && std::string_view("bius").find(lower(inner.front())) != std::string_view::npos;
}

class PlainText {
public:
    PlainText(std::string_view text, const Markup& markup)
        : mRest(text),
          mMarkup(markup),
          mTags('>', markup.tags == Markup::Tags::All ? "<" : "<\n"),
          mBraces('}', "\n") {}

    std::string read() {
        while (!mRest.empty())
            if (!takeTag() && !takeBraces() && !takeBackslash() && !takeBreak() && !takeCharacter()) takeRun();
        endLine();
        while (!mText.empty() && mText.back() == '\n') mText.pop_back();
        return std::move(mText);
    }

private:
    void put(std::string_view text) {
        if (!mDraws) mLine += text;
    }

    /// Lines that are empty before the first that is not are left out.
    void endLine() {
        const std::string_view line = mMarkup.flows ? trimmed(mLine) : trimmedBehind(mLine);
        if (!mText.empty() || !line.empty()) mText.append(line).push_back('\n');
        mLine.clear();
    }

    bool takeTag() {
        if (mRest.front() != '<') return false;
        if (mRest.substr(0, 4) == "<!--" && mMarkup.tags == Markup::Tags::All) return takeComment();
        const bool takesAll = mMarkup.tags == Markup::Tags::All;
        const size_t size = mTags.sizeOfGroup(mRest);
        if (size < 3) return takeUnclosed();
        const Element element = elementOf(mRest.substr(0, size));
        const char first = mRest[1];
        if (takesAll ? !isLetter(first) && first != '/' && first != '!' : !isKnown(element)) return false;
        mRest.remove_prefix(size);
        if (sameWord(element.name, "br")) endLine();
        return true;
    }

    /// `</i`, where the line ends before the element does.
    bool takeUnclosed() {
        constexpr size_t kLongest = 10;
        if (mMarkup.tags == Markup::Tags::All || mRest.substr(0, 2) != "</") return false;
        const std::string_view tag = mRest.substr(0, std::min(mRest.substr(0, kLongest + 1).find('\n'), mRest.size()));
        if (tag.size() > kLongest || !isKnown({trimmed(tag.substr(2)), {}, false})) return false;
        mRest.remove_prefix(tag.size());
        return true;
    }

    bool takeComment() {
        const size_t end = mRest.find("-->");
        mRest.remove_prefix(end == mRest.npos ? mRest.size() : end + 3);
        return true;
    }

    bool isCode(std::string_view group) const {
        if (group.size() < 2) return false;
        return mMarkup.braces == Markup::Braces::All || group[1] == '\\' || group == "{}" || isMicroDvdCode(group) ||
               (mMarkup.styles && isStyleCode(group));
    }

    bool takeBraces() {
        if (mRest.front() != '{') return false;
        const std::string_view group = mRest.substr(0, mBraces.sizeOfGroup(mRest));
        if (!isCode(group)) return false;
        if (mMarkup.drawings) lookForDrawing(group);
        mRest.remove_prefix(group.size());
        return true;
    }

    /// {\p1} begins a drawing, {\p0} ends it; {\pos(1,2)} is neither.
    void lookForDrawing(std::string_view group) {
        for (size_t at = group.find("\\p"); at != group.npos; at = group.find("\\p", at + 2)) {
            const char next = at + 2 < group.size() ? group[at + 2] : '\0';
            if (isDigit(next)) mDraws = next != '0';
        }
    }

    bool takeBackslash() {
        if (mRest.front() != '\\' || mRest.size() < 2) return false;
        const char code = mRest[1];
        const bool isBreak = code == 'N' || (mMarkup.backslashes && code == 'n');
        const bool isSpace = mMarkup.backslashes && code == 'h';
        if (!isBreak && !isSpace) return false;
        mRest.remove_prefix(2);
        if (isBreak) endLine();
        if (isSpace) put(" ");
        return true;
    }

    bool takeBreak() {
        const char c = mRest.front();
        size_t size = 0;
        if (mMarkup.bars && c == '|') size = 1;
        if (c == '[' && sameWord(mRest.substr(0, 4), "[br]")) size = 4;
        if (!mMarkup.flows && c == '\n') size = 1;
        if (size == 0) return false;
        mRest.remove_prefix(size);
        endLine();
        return true;
    }

    /// An entity, or a blank that runs together with others.
    bool takeCharacter() {
        if (mMarkup.flows && (isBlank(mRest.front()) || mRest.front() == '\n')) {
            if (mLine.empty() || mLine.back() != ' ') put(" ");
            mRest.remove_prefix(1);
            return true;
        }
        constexpr char32_t kNoBreakSpace = 0xA0;
        const char32_t character = mMarkup.entities ? takeEntity(&mRest) : 0;
        if (character == 0) return false;
        std::string utf8;
        const bool isSpace = character <= ' ' || character == kNoBreakSpace;
        appendUtf8(&utf8, isSpace ? ' ' : character);
        put(utf8);
        return true;
    }

    /// Up to the next character that may be more than itself.
    void takeRun() {
        const size_t end = std::min(mRest.find_first_of("<{\\|[\n& \t", 1), mRest.size());
        put(mRest.substr(0, end));
        mRest.remove_prefix(end);
    }

    std::string_view mRest;
    const Markup& mMarkup;
    Closer mTags, mBraces;
    std::string mText, mLine;
    bool mDraws = false;
};

}  // namespace

std::string plainText(std::string_view text, const Markup& markup) { return PlainText(text, markup).read(); }

}  // namespace meant
