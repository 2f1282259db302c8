#include "tools/fix/SafeText.h"
#include "tools/fix/Times.h"
#include "tools/fix/Writers.h"

namespace fix {

std::string writeSubRip(const std::vector<Piece>& pieces, Letters letters) {
    std::string text = "\xEF\xBB\xBF";
    size_t number = 0;
    for (const Piece& piece : pieces)
        text += std::to_string(++number) + "\r\n" + timeText("%02d:%02d:%02d,%03d", piece.start) + " --> " +
                timeText("%02d:%02d:%02d,%03d", piece.end) + "\r\n" + replaced(piece.text, "\n", "\r\n") + "\r\n\r\n";
    if (letters == Letters::Utf8) return text;
    std::string wide;
    appendUtf16(text, &wide);
    return wide;
}

}  // namespace fix
