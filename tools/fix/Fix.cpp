#include "tools/fix/Fix.h"

#include <algorithm>

#include "tools/fix/Remarks.h"
#include "tools/fix/SafeText.h"
#include "tools/fix/Script.h"
#include "tools/fix/Timeline.h"
#include "tools/fix/Writers.h"
#include "tools/meant/Scan.h"

namespace fix {
namespace {

using Kind = Remark::Kind;

class Fixer {
public:
    Fixer(const meant::File& file, const meant::Source& source, const Options& options)
        : mFile(file), mSource(source), mOptions(options), mForm(options.keepFormat ? formOf(file.format) : nullptr) {
        if (mForm != nullptr) mOptions.letters = Letters::Utf8;
    }

    Result fix() {
        mResult.isWhole.assign(mFile.entries.size(), true);
        if (mOptions.keepFormat && mFile.format == meant::Format::SubStationAlpha) {
            mResult.format = mFile.format;
            mResult.bytes = mendScript(mFile, mSource, &mResult.pieces);
        } else {
            chooseEntries();
            makeTexts();
            makePieces();
            write();
        }
        remarkOnFile();
        mResult.remarks = mRemarks.take();
        if (mResult.pieces.empty()) {
            mResult.format = meant::Format::None;
            mResult.refusal = "has no entry that can be shown";
            mResult.bytes.clear();
        }
        return std::move(mResult);
    }

private:
    const meant::Place& placeOf(size_t index) const { return mFile.entries[index].place; }

    void chooseEntries() {
        for (size_t i = 0; i < mFile.entries.size(); ++i) {
            const bool isChosen =
                mOptions.language.empty() || meant::sameWord(mOptions.language, mFile.entries[i].language);
            if (isChosen) mChosen.push_back(i);
            if (!isChosen) mResult.isWhole[i] = false;
        }
    }

    void makeTexts() {
        mTexts.resize(mFile.entries.size());
        for (const size_t i : mChosen) {
            Changes changes;
            mTexts[i] = safeText(mFile.entries[i].text, mOptions.letters, brackets(), &changes);
            if (changes.angles)
                mRemarks.add(Kind::Changed, "text-angle-brackets",
                             "Words in angle brackets would be taken for markup: they are written in full width.",
                             placeOf(i));
            if (changes.braces)
                mRemarks.add(Kind::Changed, "text-braces",
                             "Words in braces would be taken for codes: they are written in full width.", placeOf(i));
            if (changes.isCut) {
                mResult.isWhole[i] = false;
                mRemarks.add(Kind::NotMended, "text-too-long", "The text is longer than 8,000 bytes: it is cut there.",
                             placeOf(i));
            }
        }
        // What has no letters at all shows nothing.
        const auto isEmpty = [this](size_t i) { return mTexts[i].empty(); };
        mChosen.erase(std::remove_if(mChosen.begin(), mChosen.end(), isEmpty), mChosen.end());
    }

    void write() {
        if (mForm == nullptr) {
            mResult.bytes = writeSubRip(mResult.pieces, mOptions.letters);
            return;
        }
        mResult.format = mForm->format;
        mResult.bytes = mForm->write(mResult.pieces, mFile);
        const auto hasBreak = [](const Piece& piece) { return piece.text.find('\n') != piece.text.npos; };
        if (!mForm->hasRealBreaks && std::any_of(mResult.pieces.begin(), mResult.pieces.end(), hasBreak))
            mRemarks.add(Kind::Changed, "break-bar",
                         "The format has no line breaks but \"|\", which may be shown: SubRip has them.", {});
    }

    Brackets brackets() const {
        if (mForm != nullptr) return mForm->brackets;
        return mOptions.letters == Letters::Utf16 ? Brackets::OpenBraces : Brackets::WithLetters;
    }

    Clock clock() const {
        if (mForm != nullptr) return mForm->clock;
        Clock clock;
        constexpr Ms kLastOfTwoDigits = 359999999;  // UTF-16 is read with hours of two digits alone
        if (mOptions.letters == Letters::Utf16) clock = {kLastOfTwoDigits, 1, "srt-utf16-shape"};
        return clock;
    }

    void makePieces() {
        const std::vector<Span> spans = spansOf(mFile, mChosen, clock(), &mResult.isWhole, &mRemarks);
        const std::vector<bool> wasWhole = mResult.isWhole;
        mResult.pieces = flattened(spans, mTexts, kMostBytes, &mResult.isWhole);
        std::vector<bool> isJoined(mFile.entries.size());
        for (Piece& piece : mResult.pieces) {
            Changes changes;
            piece.text = withoutTimeLines(piece.text, mOptions.letters, &changes);
            if (changes.hasTimes)
                mRemarks.add(Kind::Changed, "srt-text-as-time-line",
                             "A line would be read as times: a no-break space stands in front of it.",
                             placeOf(piece.shows.front()));
            for (const size_t i : piece.shows) isJoined[i] = isJoined[i] || piece.shows.size() > 1;
        }
        for (const size_t i : mChosen) {
            if (wasWhole[i] && !mResult.isWhole[i])
                mRemarks.add(Kind::NotMended, "overlap", "Too much is shown at the same time: it is left out there.",
                             placeOf(i));
            if (isJoined[i])
                mRemarks.add(Kind::Changed, "overlap",
                             "It runs at the same time as others: their texts are joined for that time.", placeOf(i));
        }
    }

    void remarkOnFile() {
        if (mFile.languages.size() > 1 && mOptions.language.empty())
            mRemarks.add(Kind::Changed, "smi-languages",
                         "The file holds more than one language: all of them are shown, and --class writes one alone.",
                         {});
        if (mFile.rate.from == meant::RateFrom::Assumed)
            mRemarks.add(Kind::Changed, "",
                         "The file does not name its frame rate: times are computed at 25 frames a second, and --fps "
                         "says another.",
                         {});
        if (!mFile.delay.empty())
            mRemarks.add(Kind::Changed, "", "The header speaks of a delay, which is not applied.", {});
        if (mFile.format == meant::Format::SubRip)
            for (const meant::Place& place : mFile.strayLines)
                mRemarks.add(Kind::NotMended, "srt-damaged-times",
                             "The times of an entry are missing or damaged: it is left out.", place);
        for (const meant::Entry& entry : mFile.unseen) {
            if (entry.unseen == meant::Unseen::Drawing)
                mRemarks.add(Kind::Changed, "ssa-drawing", "It holds nothing but a drawing: it is left out.",
                             entry.place);
        }
    }

    const meant::File& mFile;
    const meant::Source& mSource;
    Options mOptions;
    const Form* mForm;  ///< null: SubRip
    Result mResult;
    Remarks mRemarks;
    std::vector<size_t> mChosen;
    std::vector<std::string> mTexts;  ///< of each entry of the file
};

std::string refusalOf(const meant::File& file, const Options& options) {
    const std::string phrase = meant::nameOf(file.format).phrase;
    if (file.format == meant::Format::None) return "is no subtitle file but " + file.nature;
    if (!meant::hasReader(file.format)) return "holds " + phrase + ", which cannot be mended";
    if (file.entries.empty()) return "holds " + phrase + " without entries";
    const auto isOfClass = [&](const meant::Language& row) { return meant::sameWord(row.name, options.language); };
    if (options.language.empty() || std::any_of(file.languages.begin(), file.languages.end(), isOfClass)) return {};
    std::string names;
    for (const meant::Language& row : file.languages) names += (names.empty() ? "" : ", ") + row.name;
    return "has no class " + options.language + (names.empty() ? "" : "; there are " + names);
}

}  // namespace

Result fix(const meant::File& file, const meant::Source& source, const Options& options) {
    Result result;
    result.format = meant::Format::None;
    result.refusal = refusalOf(file, options);
    if (!result.refusal.empty()) return result;
    return Fixer(file, source, options).fix();
}

}  // namespace fix
