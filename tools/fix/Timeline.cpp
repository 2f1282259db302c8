#include "tools/fix/Timeline.h"

#include <algorithm>
#include <set>

namespace fix {
namespace {

/// For how long an entry is shown whose end nobody says, unless another begins.
constexpr Ms kUsualLength = 5000;

/// Overlaps that come from rounding.
constexpr Ms kRounding = 1;

/// A screen bears no more at a time, and a file of thousands that all overlap shall not grow by squares.
constexpr size_t kMostAtATime = 32;
constexpr size_t kMostRemembered = 1024;

Ms rounded(Ms time, Ms unit) { return (time + unit / 2) / unit * unit; }

/// Those without an end of their own last until another begins, or for the usual length.
void giveEnds(std::vector<Span>* spans, const meant::File& file, const Clock& clock, Remarks* remarks) {
    Ms next = clock.last;
    for (size_t i = spans->size(); i-- > 0;) {
        Span& span = (*spans)[i];
        const bool isLast = i + 1 == spans->size();
        if (!isLast && (*spans)[i + 1].start > span.start) next = (*spans)[i + 1].start;
        if (span.end > span.start) continue;
        span.end = std::max(span.start + clock.unit, std::min({span.start + kUsualLength, next, clock.last}));
        remarks->add(Remark::Kind::Changed, "",
                     "The file gives no end, or one that does not lie behind the start: it is shown for 5 seconds, or "
                     "until the next one begins.",
                     file.entries[span.index].place);
    }
}

void trimRounding(std::vector<Span>* spans) {
    for (size_t i = 0; i + 1 < spans->size(); ++i) {
        Span& span = (*spans)[i];
        const Ms next = (*spans)[i + 1].start;
        if (span.start < next && span.end > next && span.end - next <= kRounding) span.end = next;
    }
}

/// Walks over the times at which something begins or ends.
class Flattener {
public:
    Flattener(const std::vector<Span>& spans, const std::vector<std::string>& texts, size_t mostBytes,
              std::vector<bool>* isWhole)
        : mSpans(spans), mTexts(texts), mMostBytes(mostBytes), mIsWhole(isWhole) {}

    std::vector<Piece> flatten() {
        const auto endsLater = [this](size_t a, size_t b) { return mSpans[a].end < mSpans[b].end; };
        std::multiset<size_t, decltype(endsLater)> byEnd(endsLater);
        size_t next = 0;
        Ms now = 0;
        while (next < mSpans.size() || !byEnd.empty()) {
            if (byEnd.empty()) now = mSpans[next].start;
            bool begins = false;
            for (; next < mSpans.size() && mSpans[next].start <= now; ++next, begins = true) {
                byEnd.insert(next);
                mActive.insert(next);
            }
            while (mActive.size() > kMostRemembered) {
                (*mIsWhole)[mSpans[*mActive.begin()].index] = false;
                mActive.erase(mActive.begin());
            }
            Ms until = mSpans[*byEnd.begin()].end;
            if (next < mSpans.size()) until = std::min(until, mSpans[next].start);
            if (until > now) put(now, until, begins);
            now = until;
            while (!byEnd.empty() && mSpans[*byEnd.begin()].end <= now) {
                mActive.erase(*byEnd.begin());
                byEnd.erase(byEnd.begin());
            }
        }
        return std::move(mPieces);
    }

private:
    void put(Ms start, Ms end, bool begins) {
        Piece piece = joined();
        piece.start = start;
        piece.end = end;
        const bool continues =
            !begins && !mPieces.empty() && mPieces.back().end == start && mPieces.back().text == piece.text;
        if (continues) {
            mPieces.back().end = end;
        } else {
            mPieces.push_back(std::move(piece));
        }
    }

    /// What runs now. When it is too much, the newest stay.
    Piece joined() {
        std::vector<size_t> kept;
        std::set<std::string_view> distinct;
        size_t size = 0;
        for (auto i = mActive.rbegin(); i != mActive.rend(); ++i) {
            const size_t index = mSpans[*i].index;
            const std::string& text = mTexts[index];
            const bool isNew = distinct.insert(text).second;
            const size_t sizeWith = size + (isNew ? text.size() + kBreak : 0);
            if (kept.size() == kMostAtATime || (!kept.empty() && sizeWith > mMostBytes)) {
                for (; i != mActive.rend(); ++i) (*mIsWhole)[mSpans[*i].index] = false;
                break;
            }
            size = sizeWith;
            kept.push_back(index);
        }
        std::reverse(kept.begin(), kept.end());
        Piece piece;
        distinct.clear();
        for (const size_t index : kept)
            if (distinct.insert(mTexts[index]).second) piece.text += (piece.text.empty() ? "" : "\n") + mTexts[index];
        piece.shows = kept;
        std::sort(piece.shows.begin(), piece.shows.end());
        return piece;
    }

    static constexpr size_t kBreak = 2;  ///< bytes of CR LF

    const std::vector<Span>& mSpans;
    const std::vector<std::string>& mTexts;
    const size_t mMostBytes;
    std::vector<bool>* mIsWhole;
    std::set<size_t> mActive;  ///< places in `mSpans`
    std::vector<Piece> mPieces;
};

}  // namespace

std::vector<Span> spansOf(const meant::File& file, const std::vector<size_t>& chosen, const Clock& clock,
                          std::vector<bool>* isWhole, Remarks* remarks) {
    using Kind = Remark::Kind;
    std::vector<Span> spans;
    spans.reserve(chosen.size());
    for (const size_t i : chosen) {
        const meant::Entry& entry = file.entries[i];
        Span span = {rounded(entry.start, clock.unit), rounded(entry.end, clock.unit), i};
        const auto lose = [&](const char* cause, const char* sentence) {
            remarks->add(Kind::NotMended, cause, sentence, entry.place);
            (*isWhole)[i] = false;
        };
        if (span.start < 0 && span.end <= 0) {
            lose("", "It begins and ends before the movie does.");
            continue;
        }
        if (span.start >= clock.last) {
            lose(clock.lateCause, "It begins later than times can be written.");
            continue;
        }
        if (span.start < 0) {
            span.start = 0;
            remarks->add(Kind::Changed, "", "It begins before the movie does: it is shown from 0 on.", entry.place);
        }
        if (span.end > clock.last) {
            span.end = clock.last;
            lose(clock.lateCause, "It ends later than times can be written: it ends at the latest of them.");
        }
        const auto isOff = [&](Ms written, Ms meant) {
            return meant >= 0 && (written > meant + 1 || written < meant - 1);
        };
        if (isOff(span.start, entry.start) || isOff(span.end, std::min(entry.end, clock.last)))
            lose("", "Its times are finer than the format can tell: they are rounded.");
        spans.push_back(span);
    }
    std::stable_sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.start < b.start; });
    giveEnds(&spans, file, clock, remarks);
    trimRounding(&spans);
    return spans;
}

std::vector<Piece> flattened(const std::vector<Span>& spans, const std::vector<std::string>& texts, size_t mostBytes,
                             std::vector<bool>* isWhole) {
    return Flattener(spans, texts, mostBytes, isWhole).flatten();
}

}  // namespace fix
