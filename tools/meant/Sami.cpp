// SAMI: elements, as of HTML, that say from when on a paragraph is shown, and to the readers of which language.
#include <algorithm>
#include <map>

#include "tools/meant/Markup.h"
#include "tools/meant/Readers.h"
#include "tools/meant/Scan.h"

namespace meant {
namespace {

/// Whether the element that `text` begins with has that name.
bool isElement(std::string_view text, std::string_view name) {
    Scan in(text);
    return in.eat('<') && in.eat(name) && !isLetter(in.peek()) && !isDigit(in.peek());
}

/// What stands between an element's name and its end, or the next element when it has none.
std::string_view attributesOf(std::string_view element, std::string_view name) {
    const std::string_view behind = element.substr(name.size() + 1);
    return behind.substr(0, behind.find_first_of("<>"));
}

/// The next attribute: name, value with or without quotes. Both empty at the end.
std::pair<std::string_view, std::string_view> eatAttribute(Scan* in) {
    constexpr std::string_view kSpace = " \t\n/";
    in->skipAny(kSpace);
    const std::string_view name = in->rest().substr(0, in->rest().find_first_of(" \t\n="));
    in->skip(name.size());
    in->skipAny(kSpace);
    if (!in->eat('=')) return {name, {}};
    in->skipAny(kSpace);
    const char quote = in->eatAny("\"'");
    const std::string_view rest = in->rest();
    const std::string_view value = rest.substr(0, quote != 0 ? rest.find(quote) : rest.find_first_of(" \t\n"));
    in->skip(value.size() + (quote != 0));
    return {name, trimmed(value)};
}

std::string_view valueOf(std::string_view attributes, std::string_view name) {
    for (Scan in(attributes); !in.atEnd();) {
        const auto [word, value] = eatAttribute(&in);
        if (sameWord(word, name)) return value;
    }
    return {};
}

std::optional<Ms> timeOf(std::string_view value) {
    Scan in(value);
    const bool isNegative = in.eat('-');
    const Scan::Digits digits = in.eatDigits();
    if (!digits) return std::nullopt;
    return isNegative ? -digits.value : digits.value;
}

/// Finds elements; comments are passed over.
class Elements {
public:
    explicit Elements(std::string_view text) : mText(text) {}

    /// The next opening bracket from `at` on; npos when there is none.
    size_t next(size_t at) {
        for (at = mText.find('<', at); at != mText.npos; at = mText.find('<', at)) {
            if (!mCommentsEnd || mText.substr(at, 4) != "<!--") return at;
            const size_t end = mText.find("-->", at);
            mCommentsEnd = end != mText.npos;
            if (mCommentsEnd) at = end + 3;
        }
        return mText.npos;
    }

private:
    std::string_view mText;
    bool mCommentsEnd = true;  ///< false: the one that was seen last does not
};

class Sami {
public:
    Sami(const Source& source, File* file) : mSource(source), mText(source.text()), mFile(file) {}

    void read() {
        Elements elements(mText);
        for (size_t at = elements.next(0); at != mText.npos; at = elements.next(at + 1)) {
            const std::string_view rest = mText.substr(at);
            if (isElement(rest, "sync")) {
                endSync(rest.data());
                beginSync(rest);
            } else if (isElement(rest, "p")) {
                endParagraph(rest.data());
                beginParagraph(rest, "p");
            } else if (isElement(rest, "/body") || isElement(rest, "/sami")) {
                endSync(rest.data());
            }
        }
        endSync(mText.data() + mText.size());
        joinClassless();
        setEnds();
        handOver();
    }

private:
    static constexpr size_t kNone = SIZE_MAX;

    void beginSync(std::string_view element) {
        const std::string_view attributes = attributesOf(element, "sync");
        mStart = timeOf(valueOf(attributes, "start"));
        mEnd = timeOf(valueOf(attributes, "end"));
        mAt = element.data();
        mFirstOfSync = mEntries.size();
        if (mStart) {
            beginParagraph(element, "sync");
        } else {
            mFile->strayLines.push_back(mSource.placeOf(element.data()));
        }
    }

    void beginParagraph(std::string_view element, std::string_view name) {
        const std::string_view attributes = attributesOf(element, name);
        const char* end = attributes.data() + attributes.size();
        mParagraph = end + (end < mText.data() + mText.size() && *end == '>');
        mIsSyncItself = name == "sync";
        mLanguage = languageOf(mIsSyncItself ? std::string_view() : valueOf(attributes, "class"));
    }

    void endSync(const char* end) {
        endParagraph(end);
        // A SYNC element without paragraphs and text ends what was there.
        if (mStart && mFirstOfSync == mEntries.size()) addEntry(languageOf({}), {});
        for (size_t i = mFirstOfSync; i < mEntries.size(); ++i) mEntries[i].behind = mSource.placeOf(end).offset;
        mStart.reset();
        mFirstOfSync = mEntries.size();
    }

    void endParagraph(const char* end) {
        if (!mStart || mParagraph == nullptr) return;
        Markup markup;
        markup.tags = Markup::Tags::All;
        markup.entities = true;
        markup.flows = true;
        const std::string text = plainText({mParagraph, static_cast<size_t>(end - mParagraph)}, markup);
        if (!mIsSyncItself || !text.empty()) addEntry(mLanguage, text);
        mParagraph = nullptr;
    }

    size_t languageOf(std::string_view name) {
        std::string key(name);
        std::transform(key.begin(), key.end(), key.begin(), lower);
        const auto [row, isNew] = mLanguages.try_emplace(key, mNames.size());
        if (isNew) {
            mNames.emplace_back(name);
            mLastOf.push_back(kNone);
        }
        return row->second;
    }

    /// Paragraphs of one language in one SYNC element are one entry.
    void addEntry(size_t language, const std::string& text) {
        if (mLastOf[language] != kNone && mLastOf[language] >= mFirstOfSync) {
            appendLines(text, &mEntries[mLastOf[language]].text);
            return;
        }
        mLastOf[language] = mEntries.size();
        Entry entry;
        entry.place = mSource.placeOf(mAt);
        entry.start = *mStart;
        entry.end = mEnd.value_or(*mStart);
        if (mEnd) entry.endFrom = End::Given;
        entry.text = text;
        mEntries.push_back(std::move(entry));
        mLanguageOf.push_back(language);
    }

    /// In a file of one class, paragraphs without a class are of that one.
    void joinClassless() {
        const auto classless = mLanguages.find("");
        if (classless == mLanguages.end() || mLanguages.size() != 2) return;
        const size_t other = std::next(classless)->second;
        std::replace(mLanguageOf.begin(), mLanguageOf.end(), classless->second, other);
    }

    /// Each language goes its own way; an empty paragraph without a class ends all of them.
    void setEnds() {
        constexpr size_t kMostLanguages = 64;  // of more than that, each ends by its own paragraphs alone
        const auto classless = mLanguages.find("");
        std::vector<std::vector<Entry*>> inOrder(mNames.size());
        for (size_t i = 0; i < mEntries.size(); ++i) {
            inOrder[mLanguageOf[i]].push_back(&mEntries[i]);
            const bool endsAll = classless != mLanguages.end() && mLanguageOf[i] == classless->second &&
                                 mEntries[i].text.empty() && mNames.size() <= kMostLanguages;
            for (size_t other = 0; endsAll && other < mNames.size(); ++other)
                if (other != mLanguageOf[i]) inOrder[other].push_back(&mEntries[i]);
        }
        for (std::vector<Entry*>& entries : inOrder) {
            std::stable_sort(entries.begin(), entries.end(), [](auto* a, auto* b) { return a->start < b->start; });
            endAtNext(entries);
        }
    }

    void handOver() {
        std::vector<size_t> counts(mNames.size());
        for (size_t i = 0; i < mEntries.size(); ++i) counts[mLanguageOf[i]] += !mEntries[i].text.empty();
        std::vector<bool> isNamed(mNames.size());
        for (size_t i = 0; i < mEntries.size(); ++i) {
            const size_t language = mLanguageOf[i];
            mEntries[i].language = mNames[language];
            if (!isNamed[language] && counts[language] > 0)
                mFile->languages.push_back({mNames[language], counts[language]});
            isNamed[language] = true;
            add(std::move(mEntries[i]), mFile);
        }
    }

    const Source& mSource;
    const std::string_view mText;
    File* mFile;

    std::optional<Ms> mStart, mEnd;  ///< of the SYNC element; no start: none is open
    const char* mAt = nullptr;
    size_t mFirstOfSync = 0;
    const char* mParagraph = nullptr;  ///< where its content begins; null: none is open
    bool mIsSyncItself = false;        ///< what stands in front of the first paragraph
    size_t mLanguage = 0;

    std::map<std::string, size_t> mLanguages;  ///< numbers by the name in small letters
    std::vector<std::string> mNames;
    std::vector<size_t> mLastOf;  ///< of each language, the last entry
    std::vector<Entry> mEntries;
    std::vector<size_t> mLanguageOf;  ///< of each entry
};

}  // namespace

bool is::samiSync(std::string_view line) {
    for (size_t at = line.find('<'); at != line.npos; at = line.find('<', at + 1)) {
        const std::string_view rest = line.substr(at);
        if (isElement(rest, "sync") && timeOf(valueOf(attributesOf(rest, "sync"), "start"))) return true;
    }
    return false;
}

void readSami(const Source& source, const Options&, File* file) { Sami(source, file).read(); }

}  // namespace meant
