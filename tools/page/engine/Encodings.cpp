// What a browser knows of the encodings of 8-bit text: iconv of Emscripten's C library, the browser's own TextDecoder
// for what that lacks, and a guess by the page's worker.
#include <emscripten.h>

#include <array>
#include <map>
#include <memory>
#include <string>

#include "tools/meant/Iconv.h"
#include "tools/meant/SystemEncodings.h"
#include "tools/meant/Utf8.h"

// clang-format off
EM_JS(int, vxGuess, (const char* bytes, size_t size, char* name, int room), {
    const guessed = Module.guessEncoding(HEAPU8.subarray(bytes, bytes + size));
    return stringToUTF8(guessed, name, room);
})

// Fills in 256 characters of one byte and 65536 of two, lead byte first; -1 where there is none.
EM_JS(int, vxTabulate, (const char* label, int32_t* single, int32_t* pairs), {
    let decoder;
    try { decoder = new TextDecoder(UTF8ToString(label), {fatal: true}); } catch (unknown) { return 0; }
    const characterOf = (bytes) => {
        try {
            const text = decoder.decode(bytes);
            const character = text.codePointAt(0);
            const isOne = text.length === (character > 0xFFFF ? 2 : 1);
            return isOne && (character < 0x80 || character > 0x9F) ? character : -1;
        } catch (none) { return -1; }
    };
    const one = new Uint8Array(1);
    const two = new Uint8Array(2);
    for (let lead = 0; lead < 256; ++lead) {
        one[0] = two[0] = lead;
        const alone = HEAP32[(single >> 2) + lead] = characterOf(one);
        for (let trail = 0; trail < 256; ++trail) {
            two[1] = trail;
            HEAP32[(pairs >> 2) + lead * 256 + trail] = lead < 0x80 || alone >= 0 || trail < 0x40 ? -1 : characterOf(two);
        }
    }
    return 1;
})
// clang-format on

namespace meant {
namespace {

/// What iconv calls otherwise, or does not know, or knows with fewer characters.
struct Name {
    const char* name;
    const char* iconv;    ///< null: not by that
    const char* browser;  ///< TextDecoder's label
};
constexpr Name kNames[] = {
    {"UHC", "CP949", nullptr},
    {"CP932", nullptr, "shift_jis"},
    {"CP874", nullptr, "windows-874"},
    {"IBM866", nullptr, "ibm866"},
    {"MAC-CYRILLIC", nullptr, "x-mac-cyrillic"},
    {"MACINTOSH", nullptr, "macintosh"},
};

/// An encoding of one and two bytes for a character.
class Table {
public:
    /// Null when the browser does not know it. Kept: it asks the browser about 65,536 pairs.
    static std::shared_ptr<const Table> of(const char* label) {
        static std::map<std::string, std::shared_ptr<const Table>> known;
        std::shared_ptr<const Table>& table = known[label];
        if (table == nullptr) table = made(label);
        return table;
    }

    void decode(std::string_view bytes, std::string* utf8) const {
        while (!bytes.empty()) {
            const auto [character, size] = first(bytes);
            appendUtf8(utf8, character);
            bytes.remove_prefix(size);
        }
    }

private:
    static std::shared_ptr<const Table> made(const char* label) {
        const auto table = std::make_shared<Table>();
        if (vxTabulate(label, table->mSingle.data(), table->mPairs.data()) == 0) return nullptr;
        return table;
    }

    struct Character {
        char32_t value;
        size_t size;
    };
    Character first(std::string_view bytes) const {
        const size_t lead = static_cast<unsigned char>(bytes[0]);
        if (mSingle[lead] >= 0) return {static_cast<char32_t>(mSingle[lead]), 1};
        if (bytes.size() == 1) return {kReplacement, 1};
        const int32_t pair = mPairs[lead << 8 | static_cast<unsigned char>(bytes[1])];
        if (pair < 0) return {kReplacement, 1};
        return {static_cast<char32_t>(pair), 2};
    }

    std::array<int32_t, 256> mSingle;
    std::array<int32_t, 65536> mPairs;
};

Encodings::Decode openInBrowser(const char* label) {
    const std::shared_ptr<const Table> table = Table::of(label);
    if (table == nullptr) return nullptr;
    return [table](std::string_view bytes, std::string* utf8) { table->decode(bytes, utf8); };
}

Encodings::Decode open(const std::string& name) {
    for (const Name& row : kNames)
        if (name == row.name) return row.iconv != nullptr ? openIconv(row.iconv) : openInBrowser(row.browser);
    return openIconv(name);
}

std::string guess(std::string_view bytes) {
    char name[64] = "";
    vxGuess(bytes.data(), bytes.size(), name, sizeof name);
    return name;
}

}  // namespace

Encodings systemEncodings() { return {guess, open}; }

}  // namespace meant
