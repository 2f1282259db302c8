#include "tools/meant/Detection.h"

#include <algorithm>

#include "tools/meant/Scan.h"
#include "tools/meant/Utf8.h"

namespace meant {
namespace {

using namespace std::literals;

const struct {
    std::string_view bytes;
    const char* encoding;
} kMarks[] = {
    {"\xEF\xBB\xBF"sv, "UTF-8"}, {"\xFF\xFE\0\0"sv, "UTF-32LE"}, {"\0\0\xFE\xFF"sv, "UTF-32BE"},
    {"\xFF\xFE"sv, "UTF-16LE"},  {"\xFE\xFF"sv, "UTF-16BE"},
};

/// When a name is replaced by that of an encoding which has the same characters and more.
enum class Widen {
    Always,
    Guessed,    ///< but not when the name was told: some characters differ, and the wider one is the usual in subtitles
    GuessedC1,  ///< the same, and only when bytes from 0x80 to 0x9F, which the narrower one does not use, occur
};
const struct {
    const char* name;
    const char* wider;
    Widen when;
} kWider[] = {
    {"BIG5", "BIG5-HKSCS", Widen::Always},
    {"GB2312", "GB18030", Widen::Always},
    {"GBK", "GB18030", Widen::Always},
    {"EUC-KR", "UHC", Widen::Always},
    {"SHIFT_JIS", "CP932", Widen::Always},
    {"TIS-620", "CP874", Widen::Always},
    {"ISO-8859-11", "CP874", Widen::Always},
    {"ISO-8859-1", "WINDOWS-1252", Widen::Always},
    {"ISO-8859-9", "WINDOWS-1254", Widen::Always},
    {"ISO-8859-15", "WINDOWS-1252", Widen::Guessed},
    {"ISO-8859-16", "WINDOWS-1250", Widen::Guessed},
    {"ISO-8859-8", "WINDOWS-1255", Widen::Guessed},
    {"ISO-8859-13", "WINDOWS-1257", Widen::Guessed},
    {"ISO-8859-2", "WINDOWS-1250", Widen::GuessedC1},
    {"ISO-8859-6", "WINDOWS-1256", Widen::GuessedC1},
    {"ISO-8859-7", "WINDOWS-1253", Widen::Guessed},
};

constexpr char kWestern[] = "WINDOWS-1252";

std::string upperCase(std::string_view text) {
    std::string upper(text);
    for (char& c : upper)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return upper;
}

std::string widened(const std::string& name, bool isGuess, bool hasC1) {
    for (const auto& row : kWider) {
        const bool applies = row.when == Widen::Always || (isGuess && (row.when == Widen::Guessed || hasC1));
        if (applies && name == row.name) return row.wider;
    }
    return name;
}

std::string toldName(const std::string& told) {
    const std::string name = upperCase(told);
    if (name.size() == 4 && name.compare(0, 3, "125") == 0) return "WINDOWS-" + name;
    if (name == "UTF8") return "UTF-8";
    return widened(name, false, false);
}

/// 16-bit and 32-bit text without a mark: its ASCII characters leave zeros at one place of each unit.
const char* wideWithoutMark(std::string_view bytes) {
    constexpr size_t kLookedAt = 4096;
    size_t zeros[4] = {};
    const size_t size = std::min(bytes.size(), kLookedAt) / 4 * 4;
    for (size_t i = 0; i < size; ++i) zeros[i % 4] += bytes[i] == 0;
    const size_t units = size / 4;
    if (units == 0) return nullptr;
    const auto are = [units](size_t count) { return count >= units - units / 16; };
    const auto few = [units](size_t count) { return count <= units / 16; };
    const auto some = [units](size_t count) { return count > units / 8; };
    if (are(zeros[2]) && are(zeros[3]) && few(zeros[0])) return "UTF-32LE";
    if (are(zeros[0]) && are(zeros[1]) && few(zeros[3])) return "UTF-32BE";
    if (some(zeros[1]) && some(zeros[3]) && few(zeros[0]) && few(zeros[2])) return "UTF-16LE";
    if (some(zeros[0]) && some(zeros[2]) && few(zeros[1]) && few(zeros[3])) return "UTF-16BE";
    return nullptr;
}

/// "ASCII", "UTF-8", or null for text that is neither. A damaged place among many sound ones leaves it UTF-8.
const char* asciiOrUtf8(std::string_view bytes) {
    size_t sound = 0, damaged = 0;
    while (!bytes.empty()) {
        if (isAscii(bytes.front())) {
            bytes.remove_prefix(1);
        } else {
            const std::string_view before = bytes;
            const bool isWhole = takeUtf8(&bytes) != kReplacement || before.substr(0, 3) == "\xEF\xBF\xBD";
            ++(isWhole ? sound : damaged);
        }
    }
    if (sound + damaged == 0) return "ASCII";
    constexpr size_t kSoundForOneDamaged = 20;
    return damaged <= sound / kSoundForOneDamaged ? "UTF-8" : nullptr;
}

/// The lines that ASCII does not suffice for, as many as a guess needs.
std::string telling(std::string_view bytes) {
    constexpr size_t kEnough = 32768;
    std::string lines;
    while (!bytes.empty() && lines.size() < kEnough) {
        const size_t end = bytes.find_first_of("\r\n");
        const std::string_view line = bytes.substr(0, end == bytes.npos ? end : end + 1);
        if (!isAscii(line)) lines += line.substr(0, kEnough);
        bytes.remove_prefix(line.size());
    }
    return lines;
}

/// Guesses that few letters do not bear: more usual encodings have them, too.
bool isRare(const std::string& name) {
    static const char* const kRare[] = {"MAC-",        "VISCII",      "WINDOWS-1258", "ISO-8859-3", "ISO-8859-4",
                                        "ISO-8859-10", "ISO-8859-13", "ISO-8859-14",  "IBM8"};
    const auto begins = [&](const char* rare) { return name.compare(0, std::string_view(rare).size(), rare) == 0; };
    return std::any_of(std::begin(kRare), std::end(kRare), begins);
}

/// ASCII alone, with the escape sequences that begin and end Japanese characters.
bool isIso2022Jp(std::string_view bytes) {
    const auto has = [bytes](std::string_view escape) { return bytes.find(escape) != bytes.npos; };
    return (has("\x1B$B") || has("\x1B$@")) && (has("\x1B(B") || has("\x1B(J"));
}

/// More bytes beyond ASCII than letters: no text in Latin letters, whatever was guessed.
bool isDense(std::string_view lines) {
    const auto high = std::count_if(lines.begin(), lines.end(), [](char c) { return !isAscii(c); });
    return high > std::count_if(lines.begin(), lines.end(), [](char c) { return isLetter(c); });
}

bool isOfWord(char c) { return isLetter(c) || static_cast<unsigned char>(c) >= 0xC0; }
bool isInWord(char before, char after) { return isOfWord(before) && isOfWord(after); }
bool isBehindLetter(char before, char) { return isOfWord(before); }
bool isBeforeSmallGreek(char, char after) { return static_cast<unsigned char>(after) >= 0xDC; }

/// Bytes that are signs in what was guessed, and letters in an ISO encoding that is the same otherwise: where they
/// stand as letters do, and nothing occurs that only the wider one has, it is that one.
const struct {
    const char* name;
    const char* iso;
    std::string_view letters;
    bool (*areLetters)(char before, char after);
} kIso[] = {
    {"WINDOWS-1250", "ISO-8859-2", "\xB1\xB6", isBehindLetter},
    {"WINDOWS-1252", "ISO-8859-15", "\xBD", isInWord},
    {"WINDOWS-1253", "ISO-8859-7", "\xB6", isBeforeSmallGreek},
};

std::string withIsoLetters(const std::string& name, std::string_view lines) {
    for (const auto& row : kIso) {
        if (name != row.name) continue;
        for (size_t at = lines.find_first_of(row.letters); at != lines.npos;
             at = lines.find_first_of(row.letters, at + 1)) {
            const char before = at > 0 ? lines[at - 1] : '\0', after = at + 1 < lines.size() ? lines[at + 1] : '\0';
            if (row.areLetters(before, after)) return row.iso;
        }
    }
    return name;
}

size_t countDamaged(std::string_view lines, const std::string& name, const Encodings& encodings) {
    const Encodings::Decode decode = encodings.open ? encodings.open(name) : nullptr;
    if (!decode) return SIZE_MAX;
    std::string text;
    decode(lines, &text);
    return countReplacements(text);
}

/// Double-byte encodings share most of their codes: text in one with some words in the language of another, as where
/// Chinese and Japanese stand below each other, gets taken for that.
std::string withoutDamage(const std::string& name, std::string_view lines, const Encodings& encodings) {
    static const char* const kDoubleByte[] = {"EUC-JP", "CP932", "UHC", "BIG5-HKSCS", "GB18030"};
    const auto isName = [&name](const char* row) { return name == row; };
    if (std::none_of(std::begin(kDoubleByte), std::end(kDoubleByte), isName)) return name;
    constexpr size_t kCharactersForOneDamaged = 50;
    if (countDamaged(lines, name, encodings) <= lines.size() / 2 / kCharactersForOneDamaged) return name;
    for (const char* other : {"GB18030", "BIG5-HKSCS", "UHC", "CP932"})
        if (countDamaged(lines, other, encodings) == 0) return other;
    return name;
}

/// Nothing but capitals of Cyrillic gets taken for Western text, which never has so many accents.
bool isCapitals(std::string_view lines) {
    const auto isCapital = [](char c) {
        return static_cast<unsigned char>(c) >= 0xC0 && static_cast<unsigned char>(c) <= 0xDF;
    };
    const auto isHigh = [](char c) { return !isAscii(c); };
    const auto high = std::count_if(lines.begin(), lines.end(), isHigh);
    return isDense(lines) && std::count_if(lines.begin(), lines.end(), isCapital) * 10 >= high * 9;
}

/// The characters of Hong Kong are not among those by which Big5 is guessed.
bool isHongKong(std::string_view lines, const Encodings& encodings) {
    return isDense(lines) && countDamaged(lines, "BIG5-HKSCS", encodings) == 0;
}

Encoding guessed(std::string_view bytes, const Encodings& encodings) {
    const std::string lines = telling(bytes);
    const std::string name = encodings.guess ? upperCase(encodings.guess(lines)) : "";
    const auto isC1 = [](char c) { return !isAscii(c) && static_cast<unsigned char>(c) < 0xA0; };
    const auto isHigh = [](char c) { return !isAscii(c); };
    constexpr long kLettersForARareOne = 64;
    const bool isWeak = isRare(name) && std::count_if(lines.begin(), lines.end(), isHigh) < kLettersForARareOne;
    const bool isNone = name.empty() || name == "ASCII" || isWeak;
    const bool hasC1 = std::any_of(lines.begin(), lines.end(), isC1);
    std::string wide = isNone ? kWestern : widened(name, true, hasC1);
    if (wide == kWestern && isHongKong(lines, encodings)) return {"BIG5-HKSCS", EncodingFrom::Guessed};
    if (wide == kWestern && isCapitals(lines)) return {"WINDOWS-1251", EncodingFrom::Guessed};
    if (!hasC1) wide = withIsoLetters(wide, lines);
    return {withoutDamage(wide, lines, encodings), isNone ? EncodingFrom::Assumed : EncodingFrom::Guessed};
}

}  // namespace

Detected detectEncoding(std::string_view bytes, const Options& options, const Encodings& encodings) {
    for (const auto& mark : kMarks)
        if (bytes.substr(0, mark.bytes.size()) == mark.bytes)
            return {{mark.encoding, EncodingFrom::Mark}, mark.bytes.size()};
    if (!options.encoding.empty()) return {{toldName(options.encoding), EncodingFrom::Told}};
    if (const char* wide = wideWithoutMark(bytes)) return {{wide, EncodingFrom::Content}};
    if (isAscii(bytes) && isIso2022Jp(bytes)) return {{"ISO-2022-JP", EncodingFrom::Content}};
    if (const char* name = asciiOrUtf8(bytes)) return {{name, EncodingFrom::Content}};
    return {guessed(bytes, encodings)};
}

}  // namespace meant
