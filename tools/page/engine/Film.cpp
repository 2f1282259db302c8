#include "Film.h"

#include <unistd.h>

#include <algorithm>

#include "Extents.h"
#include "Stages.h"
#include "subtitle/SubtitleParserSUBIDX.h"
#include "tools/vxsub/Errors.h"
#include "tools/vxsub/Sentences.h"
#include "tools/vxsub/Text.h"

namespace page {

using namespace vxsub;
using android::S64;

namespace {

constexpr size_t kLongestLine = 10000;  // bytes of a source line that are shown

U32 asOffset(S64 position) { return U32(std::clamp<S64>(position, 0, 0xFFFFFFFF)); }

/// Bit by bit in the order of `kMarkKinds`.
uint8_t bitsOf(const Marks& marks) {
    uint8_t bits = 0;
    for (size_t i = 0; i < std::size(kMarkKinds); ++i) bits = uint8_t(bits | (marks.*kMarkKinds[i].isSet) << i);
    return bits;
}

/// The pixels of a part.
std::vector<uint8_t> pixelsOf(const Image& image, const Box& box) {
    std::vector<uint8_t> pixels;
    pixels.reserve(size_t(box.width) * size_t(box.height) * sizeof(Colour));
    for (int y = box.top; y < box.top + box.height && box.width > 0; ++y) {
        const auto* const row = reinterpret_cast<const uint8_t*>(&image.at(box.left, y));
        pixels.insert(pixels.end(), row, row + size_t(box.width) * sizeof(Colour));
    }
    return pixels;
}

/// As much as is shown of it, cut between characters.
std::string_view cut(std::string_view line) {
    size_t end = std::min(line.size(), kLongestLine);
    while (end < line.size() && end > 0 && (line[end] & 0xC0) == 0x80) --end;
    return line.substr(0, end);
}

}  // namespace

Film::Film(const std::string& folder, const OpenOptions& options, Size surface)
    : mFolder(folder), mOptions(options), mSurface(surface) {
    enter();
    try {
        {
            const LogTaker taker(mOpeningLog);
            open();
        }
        tellStage("tables");
        gatherTables();
    } catch (const FileError& error) {
        mRefusal = error.what();
    }
}

void Film::open() {
    mViewer = nullptr;
    mFile = nullptr;
    mFile = std::make_unique<SubtitleFile>(mOptions);
    mViewer = std::make_unique<Viewer>(*mFile, mSurface);
}

std::optional<Television::Shown> Film::draw(U32 index) {
    if (index != mShown) return mViewer->picture(index);
    mShowingLog = LogLines();
    const LogTaker taker(mShowingLog);
    return mViewer->picture(index);
}

/// Gives `use` an entry's picture. A parser that refused one goes on from where that left it, so that the next answer
/// would depend on what was asked before: it is replaced.
template <class Use>
void Film::look(U32 index, Use use) {
    const std::optional<Television::Shown> shown = draw(index);
    use(shown);
    if (!shown && mFile->hasPictures()) open();
}

/// The parts of a pair are looked for beside the name.
void Film::enter() const {
    if (chdir(mFolder.c_str()) != 0) throw FileError(mFolder + ": is missing");
}

SubtitleFile& Film::file() const {
    if (mFile == nullptr) throw FileError(mRefusal);
    enter();
    return *mFile;
}

void Film::gatherTables() {
    for (const Track& track : mFile->tracks()) {
        std::vector<Entry> entries;
        for (U32 i = track.first; i < track.end; ++i) entries.push_back(mFile->entry(i));
        for (const Marks& marks : marksOf(entries)) mMarks.push_back(bitsOf(marks));
        for (const Entry& entry : entries) {
            mStarts.push_back(entry.start);
            mEnds.push_back(entry.end);
        }
    }
    for (U32 i = 0; i < mFile->count(); ++i) mOffsets.push_back(asOffset(mFile->position(i)));
    mLengths = extents();
}

Json Film::tracks() const {
    Json tracks = Json::array();
    for (const Track& track : mFile->tracks()) {
        const Name language = nameOf(track.language);
        tracks.push_back({{"language", language.word},
                          {"languageName", language.phrase},
                          {"first", track.first},
                          {"end", track.end}});
    }
    return tracks;
}

Json Film::vobSub() const {
    const android::SubtitleParserSUBIDX* const index = mFile->vobSub();
    if (index == nullptr) return nullptr;
    Json palette = Json::array();
    for (size_t i = 0; i < 16; ++i) palette.push_back(index->m_au32Palette[i] & 0xFFFFFF);
    return {{"frameWidth", index->m_u32Width},
            {"frameHeight", index->m_u32Height},
            {"originX", index->m_u32OriginX},
            {"originY", index->m_u32OriginY},
            {"palette", palette},
            {"pictureBytes", index->m_s64DataTotalSizeSub}};
}

std::vector<U32> Film::extents() const {
    const bool isWide = mFile->codeType() == android::E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE ||
                        mFile->codeType() == android::E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG;
    const android::SubtitleParserSUBIDX* const index = mFile->vobSub();
    if (index != nullptr) return gapsBehind(mOffsets, size_t(index->m_s64DataTotalSizeSub));
    return extentsOf(mFile->bytes(), mOffsets, mFile->type(), isWide);
}

Json Film::facts(Arrays& arrays) {
    if (mFile == nullptr) return {{"refused", mRefusal}};
    const bool isText = !mFile->hasPictures();
    const std::optional<FrameRate> rate = mFile->frameRate();
    return {{"format", nameOf(mFile->type()).word},
            {"formatName", nameOf(mFile->type()).phrase},
            {"codeType", nameOf(mFile->codeType()).word},
            {"encoding", mFile->encoding()},
            {"reading", isText ? describeReading(mFile->decoder()) : ""},
            {"frameRate", rate ? describeRate(*rate, mOptions) : ""},
            {"count", mFile->count()},
            {"starts", arrays.put(mStarts)},
            {"ends", arrays.put(mEnds)},
            {"offsets", arrays.put(mOffsets)},
            {"lengths", arrays.put(mLengths)},
            {"marks", arrays.put(mMarks)},
            {"tracks", tracks()},
            {"isPictures", !isText},
            {"vobSub", vobSub()}};
}

std::string Film::row(U32 index) {
    if (!mFile->hasPictures()) return escapeLine(mViewer->text(index));
    if (mRows.empty()) mRows.resize(mFile->count());
    if (mRows[index].empty())
        look(index, [&](const auto& shown) { mRows[index] = escapeLine(mViewer->wordsFor(index, shown)); });
    return mRows[index];
}

Json Film::texts(U32 from, U32 count) {
    const U32 all = file().count();
    Json texts = Json::array();
    for (U32 i = std::min(from, all); i < all && i - from < count; ++i) texts.push_back(row(i));
    return texts;
}

Json Film::entry(U32 index, Arrays& arrays) {
    if (index >= file().count()) throw FileError("there is no entry " + std::to_string(index));
    const Entry entry = mFile->entry(index);
    Json answer = {{"index", index},   {"track", mFile->trackOf(index)}, {"start", entry.start},
                   {"end", entry.end}, {"offset", mOffsets[index]},      {"length", mLengths[index]},
                   {"text", ""},       {"units", Json(nullptr)},         {"wide", false},
                   {"line", 0}};
    Units units;
    if (!mFile->hasPictures()) {
        units = mFile->units(index, true);
        answer["text"] = encodeUtf8(mFile->decoder().decode(units));
        answer["line"] = lineAt(mOffsets[index]);
    }
    answer["units"] = arrays.put(units.values);
    answer["wide"] = units.wide;
    return answer;
}

Json Film::search(const std::string& words, Arrays& arrays) {
    file();
    if (mFile->hasPictures()) return arrays.put(std::vector<U32>());
    if (!mTexts) mTexts.emplace(*mFile);
    return arrays.put(mTexts->holding(words));
}

Json Film::at(U32 track, U32 ms) {
    if (track >= file().tracks().size()) track = 0;
    mFile->chooseTrack(track);
    const std::optional<U32> begun = mFile->entryBegunAt(ms), shown = mFile->entryShownAt(ms);
    if (shown != mShown) mShowingLog = LogLines();
    mShown = shown;
    Json answer = {{"time", ms},
                   {"begun", begun ? int(*begun) : -1},
                   {"shown", shown ? int(*shown) : -1},
                   {"why", shown ? "" : describeGap(*mFile, ms)},
                   {"lines", Json::array()}};
    if (!shown || mFile->hasPictures()) return answer;
    mShowingLog = LogLines();
    const LogTaker taker(mShowingLog);
    answer["lines"] = displayLines(mFile->text(*shown));
    return answer;
}

Json Film::picture(U32 index, Arrays& arrays) {
    if (index >= file().count()) throw FileError("there is no entry " + std::to_string(index));
    Json answer = {{"index", index}, {"surfaceWidth", mSurface.width}, {"surfaceHeight", mSurface.height}};
    look(index, [&](const std::optional<Television::Shown>& shown) {
        const Box box = shown ? shown->box : Box{};
        answer["left"] = box.left;
        answer["top"] = box.top;
        answer["width"] = box.width;
        answer["height"] = box.height;
        answer["rgba"] = arrays.put(shown ? pixelsOf(shown->image, box) : std::vector<uint8_t>());
        answer["why"] = box.isEmpty() && mFile->hasPictures() ? mViewer->why(index, shown) : "";
    });
    return answer;
}

Json Film::log() const { return {{"opening", mOpeningLog.json()}, {"showing", mShowingLog.json()}}; }

SourceLines& Film::source() {
    enter();
    if (!mSource) mSource.emplace(mOptions);
    return *mSource;
}

Json Film::sourceFacts() {
    const meant::Encoding& encoding = source().encoding();
    const bool isMarked = encoding.from == meant::EncodingFrom::Mark;
    return {{"lines", source().count()}, {"encoding", encoding.name}, {"mark", isMarked ? encoding.name : ""}};
}

Json Film::lines(size_t from, size_t count) {
    Json answer = Json::array();
    for (const SourceLines::Line& line : source().lines(from, count))
        answer.push_back({{"number", line.number},
                          {"offset", line.offset},
                          {"length", line.length},
                          {"text", cut(line.text)},
                          {"ending", line.ending}});
    return answer;
}

size_t Film::lineAt(size_t offset) { return source().lineAt(offset); }

}  // namespace page
