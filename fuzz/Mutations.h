/// Changes of an input that keep what it is built of: the lines and time stamps of a text, the fields of an index, the
/// commands and run lengths of a subpicture. Half of a fuzzer's mutations are these, the others are blind.
#pragma once

#include <vector>

#include "subtitle/SubtitleTypes.h"

namespace fuzz {

/// Changes the input in one to four places; the same seed makes the same changes. What exceeds a size limit is the
/// caller's to cut.
using Mutate = void(std::vector<android::U8>& input, android::U32 seed);

/// Files of every text format, in any of the encodings that a mark tells: numbers of a time stamp, whole time lines,
/// lines, line ends, tags and brace groups, separators, and the encoding itself.
Mutate mutateText;

/// The same for a VobSub index, with its keywords and their fields.
Mutate mutateIndex;

/// A subpicture unit: sizes, offsets, commands and run lengths. Packs of a stream: headers, order and what they hold.
Mutate mutateUnit;

}  // namespace fuzz
