// The one bridge to zlib.
#include "ReportPage.h"

#include <stdio.h>
#include <zlib.h>

#include "Errors.h"

namespace vxsub {
namespace {

constexpr std::string_view kPlace = "<!--files-->";

/// As browsers inflate it: with zlib's head and checksum.
std::string deflated(std::string_view bytes) {
    uLongf size = compressBound(uLong(bytes.size()));
    std::string packed(size, '\0');
    const auto* const in = reinterpret_cast<const Bytef*>(bytes.data());
    auto* const out = reinterpret_cast<Bytef*>(packed.data());
    if (compress2(out, &size, in, uLong(bytes.size()), Z_BEST_COMPRESSION) != Z_OK)
        throw FileError("there is no memory to compress the files");
    packed.resize(size);
    return packed;
}

std::string base64(std::string_view bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        unsigned group = 0;
        for (size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (size_t k = 0; k < 4; ++k) text += i + k <= bytes.size() ? kDigits[group >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

/// For an address; letters and digits of ASCII, a few signs and those in `alsoPlain` stand for themselves.
std::string percentEncoded(const std::string& text, std::string_view alsoPlain) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.~";
    std::string encoded;
    for (const char c : text) {
        char code[8];
        snprintf(code, sizeof code, "%%%02X", static_cast<unsigned char>(c));
        const bool isPlain = kPlain.find(c) != kPlain.npos || alsoPlain.find(c) != alsoPlain.npos;
        encoded += isPlain ? std::string(1, c) : code;
    }
    return encoded;
}

std::string escapedForHtml(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        const bool isControl = c >= 0 && c < ' ';  // of line ends, browsers make others
        if (isControl || c == '&' || c == '<' || c == '>' || c == '"')
            escaped += "&#" + std::to_string(int(c)) + ";";
        else
            escaped += c;
    }
    return escaped;
}

}  // namespace

std::string pageWith(const std::vector<EmbeddedFile>& files, std::string_view page, const std::string& path) {
    const size_t place = page.rfind(kPlace);
    if (place == page.npos) throw FileError(path + ": is not the inspector's page");
    std::string report(page.substr(0, place));
    for (const EmbeddedFile& file : files) {
        report += "<script type=\"application/octet-stream+deflate\" data-name=\"" + escapedForHtml(file.name) + "\">";
        report += base64(deflated(file.bytes)) + "</script>\n";
    }
    return report.append(page.substr(place + kPlace.size()));
}

std::string linkTo(const std::string& page, const std::string& name, unsigned entry) {
    return percentEncoded(page, "/") + "#file=" + percentEncoded(name, "") + "&entry=" + std::to_string(entry);
}

}  // namespace vxsub
