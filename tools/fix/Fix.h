/// A copy of a subtitle file that the television shows as its author meant.
///
/// Knows what was meant (tools/meant) and the forms that always show; of the library itself it needs nothing.
#pragma once

#include <string>
#include <vector>

#include "tools/meant/Meant.h"
#include "tools/meant/Source.h"

namespace fix {

using meant::Ms;

enum class Letters {
    Utf8,   ///< with a mark
    Utf16,  ///< little-endian, with a mark: for televisions whose subtitle language is Big5
};

struct Options {
    Letters letters = Letters::Utf8;
    std::string language;     ///< SAMI: the one class that is written; empty: all of them
    bool keepFormat = false;  ///< the file stays what it is, where a form of it shows everything
};

/// An entry of the new file.
struct Piece {
    Ms start = 0, end = 0;
    std::string text;           ///< as it will be seen: UTF-8, '\n' between lines
    std::vector<size_t> shows;  ///< which of the meant entries, ascending
};

/// Something that is not as it was meant, or had to be decided.
struct Remark {
    enum class Kind {
        Changed,    ///< it shows, in another way than the file says
        NotMended,  ///< it does not show
    };
    Kind kind = Kind::Changed;
    const char* cause = "";     ///< a name of the causes' vocabulary; empty where none stands for it
    const char* sentence = "";  ///< about one entry
    size_t count = 0;           ///< entries, or texts
    meant::Place first;
};

struct Result {
    meant::Format format = meant::Format::SubRip;  ///< of the new file; None: there is none
    std::string refusal;                           ///< why there is none
    std::string bytes;
    std::vector<Piece> pieces;  ///< in order; no two at the same time but in a script that is kept
    std::vector<bool> isWhole;  ///< of each meant entry, whether the pieces show all of it
    std::vector<Remark> remarks;
};

/// `source` is the text that `file` was read from. Takes time in proportion to the entries, whatever they are.
Result fix(const meant::File& file, const meant::Source& source, const Options& options);

}  // namespace fix
