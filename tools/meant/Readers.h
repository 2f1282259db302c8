/// The formats' readers, a source file each, and what they share.
#pragma once

#include <optional>
#include <string_view>

#include "tools/meant/Meant.h"
#include "tools/meant/Source.h"

namespace meant {

/// Whether a line is one that begins an entry of the format.
namespace is {
bool subRipTime(std::string_view line);
bool subStationEvent(std::string_view line);
bool samiSync(std::string_view line);
bool timedTextLine(std::string_view line);
bool subViewer20Time(std::string_view line);
bool subViewer10Time(std::string_view line);
bool microDvdLine(std::string_view line);
bool dvbTextLine(std::string_view line);
}  // namespace is

/// Reads the entries, and what else the format says, into `file`.
void readSubRip(const Source& source, const Options& options, File* file);
void readSubStationAlpha(const Source& source, const Options& options, File* file);
void readSami(const Source& source, const Options& options, File* file);
void readTimedText(const Source& source, const Options& options, File* file);
void readSubViewer20(const Source& source, const Options& options, File* file);
void readSubViewer10(const Source& source, const Options& options, File* file);
void readMicroDvd(const Source& source, const Options& options, File* file);
void readDvbText(const Source& source, const Options& options, File* file);

/// The usual rate, where nothing tells another.
constexpr uint32_t kUsualRate = 25000;

/// When a frame begins, rounded to a millisecond.
Ms timeOfFrame(int64_t frame, uint32_t rateThousandths);

/// The text from the beginning of line `first` to the end of the line before `last`; empty when there is none.
std::string_view textOf(const Source& source, size_t first, size_t last);

/// The text from where `begin` begins, likewise.
std::string_view textFrom(std::string_view begin, const Source& source, size_t last);

/// An entry without text that begins in line `first` and goes up to line `last`.
Entry entryAt(const Source& source, size_t first, size_t last);
Entry entryAt(const Source& source, size_t first, size_t last, Ms start, Ms end);

/// Puts lines behind a text, on lines of their own.
void appendLines(const std::string& lines, std::string* text);

/// Puts an entry where it belongs: an empty one among the unseen.
void add(Entry entry, File* file);

/// Gives each entry without an end the start of the next later one; those without text end the one before, and no more.
void endAtNext(const std::vector<Entry*>& inOrder);

/// The same, in the order of the file, and `add`s them.
void addEndingAtNext(std::vector<Entry> entries, File* file);

/// The delay in a header of SubViewer: what stands behind `[DELAY]`, or on the next line; empty when that is 0.
std::string delayIn(const Source& source, size_t headerLines);

}  // namespace meant
