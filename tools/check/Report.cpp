#include "tools/check/Report.h"

#include <stdio.h>

#include <algorithm>
#include <map>

#include "tools/meant/Utf8.h"

namespace check {
namespace {

constexpr char kUnexplained[] = "unexplained";

Cost costOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Displaced:
            return Cost::Times;
        case Verdict::Altered:
            return Cost::Text;
        case Verdict::Hidden:
            return Cost::Hidden;
        case Verdict::Odd:
            return Cost::Looks;
        default:
            return Cost::Entries;
    }
}

/// Lines of shown texts, found in the file; the places ascend mostly.
class Finder {
public:
    explicit Finder(std::string_view bytes) : mBytes(bytes) {}

    meant::Place find(const std::string& text) {
        constexpr size_t kTelling = 3;
        std::string line;
        for (size_t at = 0; at < text.size() && line.size() < kTelling; at += line.size() + 1)
            line = text.substr(at, text.find_first_of("\r\n", at) - at);
        if (line.size() < kTelling || mMisses == 0) return {0, 0};
        size_t at = mBytes.find(line, mLast.offset);
        if (at == mBytes.npos) {
            --mMisses;
            at = mBytes.find(line);
            if (at == mBytes.npos) return {0, 0};
            mLast = {};
        }
        for (; mLast.offset < at; ++mLast.offset) mLast.line += isLineEnd(mLast.offset);
        return mLast;
    }

private:
    bool isLineEnd(size_t at) const {
        const bool isLf = at + 1 < mBytes.size() && mBytes[at + 1] == '\n';
        return mBytes[at] == '\n' || (mBytes[at] == '\r' && !isLf);
    }

    std::string_view mBytes;
    meant::Place mLast;
    size_t mMisses = 64;  ///< each of them costs a walk through the file
};

std::string excerpt(const std::string& text) {
    constexpr size_t kMost = 40;
    std::string line;
    for (std::string_view rest = text; !rest.empty() && line.size() <= 2 * kMost;) {
        const char32_t c = meant::takeUtf8(&rest);
        const bool isControl = c < 0x20 || (c >= 0x7F && c < 0xA0);
        if (!isControl)
            meant::appendUtf8(&line, c);
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    }
    if (line.size() <= kMost) return '"' + line + '"';
    size_t end = kMost;
    while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0) == 0x80) --end;
    return '"' + line.substr(0, end) + "...\"";
}

std::string describe(const Difference& difference) {
    switch (difference.verdict) {
        case Verdict::Displaced:
            return "is shown at " + clock(difference.shown->start);
        case Verdict::Altered:
            return difference.shown->text.empty() ? "is shown without its text"
                                                  : "is shown as " + excerpt(difference.shown->text);
        case Verdict::Odd:
            return "is shown with codes: " + excerpt(difference.shown->text);
        case Verdict::Hidden:
            return "is not shown at " + clock(difference.when);
        default:
            return "is not shown";
    }
}

class Reporter {
public:
    explicit Reporter(const Scene& scene) : mScene(scene), mFinder(scene.bytes) {}

    Remark remark(const Finding& finding) {
        const Difference& difference = finding.difference;
        Remark remark;
        remark.cause = finding.cause;
        remark.cost = finding.cause != nullptr ? finding.cause->cost : costOf(difference.verdict);
        remark.place.line = 0;
        if (difference.verdict == Verdict::Right) return remark;
        if (difference.entry != nullptr)
            tellEntry(difference, &remark);
        else
            tellFalse(*difference.shown, &remark);
        return remark;
    }

private:
    void tellEntry(const Difference& difference, Remark* remark) const {
        const meant::Entry& entry = *difference.entry;
        remark->entry = static_cast<size_t>(&entry - mScene.meant.entries.data()) + 1;
        remark->place = entry.place;
        remark->start = entry.start;
        if (entry.endFrom != meant::End::Open) remark->end = entry.end;
        if (difference.verdict == Verdict::Displaced) remark->shownAt = difference.shown->start;
        remark->what =
            "entry " + std::to_string(remark->entry) + " at " + clock(entry.start) + " " + describe(difference);
    }

    void tellFalse(const ShownEntry& shown, Remark* remark) {
        remark->place = mFinder.find(shown.text);
        remark->start = shown.start;
        remark->end = shown.end;
        remark->what = excerpt(shown.text) + " is shown at " + clock(shown.start) + " and was not meant";
    }

    const Scene& mScene;
    Finder mFinder;
};

/// Entries of SubRip whose times cannot be read are among none of those that were meant, and are lost all the same.
void addUntimed(const meant::File& meant, Report* report) {
    if (meant.format != meant::Format::SubRip) return;
    for (const meant::Place& place : meant.strayLines) {
        Remark remark;
        remark.cause = findCause("srt-damaged-times");
        remark.cost = remark.cause->cost;
        remark.what = "an entry is not shown";
        remark.place = place;
        report->remarks.push_back(remark);
    }
}

std::string headOf(const Remark& remark, const std::string& name) {
    const std::string place = remark.place.line == 0 ? name : name + ":" + std::to_string(remark.place.line);
    return place + ": " + (remark.what.empty() ? "" : remark.what + ": ") + "[" + nameOf(remark) + "]";
}

}  // namespace

Report reportOf(const Scene& scene) {
    const Comparison comparison = compare(scene.meant, scene.shown);
    Report report;
    const meant::FormatName& format = meant::nameOf(scene.meant.format);
    report.format = format.word;
    report.formatName = format.phrase;
    report.encoding = scene.meant.encoding.name;
    report.isMarked = scene.meant.encoding.from == meant::EncodingFrom::Mark;
    report.meant = comparison.meant;
    report.right = comparison.right;
    Reporter reporter(scene);
    for (const Finding& finding : explain(scene, comparison)) report.remarks.push_back(reporter.remark(finding));
    addUntimed(scene.meant, &report);
    return report;
}

const char* nameOf(const Remark& remark) { return remark.cause != nullptr ? remark.cause->name : kUnexplained; }

const char* sentenceOf(const Remark& remark) {
    return remark.cause != nullptr ? remark.cause->sentence : "No rule of this program knows the cause.";
}

bool hasLoss(const Report& report) {
    return std::any_of(report.remarks.begin(), report.remarks.end(),
                       [](const Remark& remark) { return isLoss(remark.cost); });
}

std::string clock(Ms time) {
    constexpr Ms kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute;
    const char* sign = time < 0 ? "-" : "";
    const Ms ms = time < 0 ? -time : time;
    char text[64];
    snprintf(text, sizeof text, "%s%lld:%02d:%02d,%03d", sign, static_cast<long long>(ms / kHour),
             static_cast<int>(ms / kMinute % 60), static_cast<int>(ms / kSecond % 60), static_cast<int>(ms % kSecond));
    return text;
}

std::string linesFor(const Report& report, const std::string& name, bool all) {
    constexpr size_t kPlaces = 3;
    std::map<std::string, size_t> counts, told;
    for (const Remark& remark : report.remarks) ++counts[nameOf(remark)];
    std::string lines;
    for (const Remark& remark : report.remarks) {
        const std::string cause = nameOf(remark);
        const size_t count = ++told[cause];
        if (all || count <= kPlaces) {
            lines += headOf(remark, name);
            if (count == 1) lines += std::string(" ") + sentenceOf(remark);
            if (count == 1 && remark.cause != nullptr) lines += std::string(" Mend: ") + remark.cause->mend;
            lines += '\n';
        } else if (count == counts[cause]) {
            lines += name;
            lines += ": " + std::to_string(count - kPlaces) + " more of [" + cause + "]\n";
        }
    }
    lines += name + ": " + std::to_string(report.right) + " of " + std::to_string(report.meant) + " " + report.things +
             " show as meant (" + report.formatName;
    if (!report.encoding.empty()) lines += ", " + report.encoding + (report.isMarked ? " with a mark" : "");
    return lines + ")\n";
}

}  // namespace check
