// Whole files of every format, each against the listing beside it. VXSUBTITLE_ACCEPT_MEANT=1 writes the listings anew.
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/meant/Listing.h"
#include "tools/meant/SystemEncodings.h"

namespace meant {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<fs::path> files() {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(MEANT_FILES))
        if (entry.path().extension() != ".meant") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

/// What is said of the file, and a line for each entry.
std::string listingOf(const File& file) {
    static const char* const kFrom[] = {"mark", "told", "content", "guessed", "assumed"};
    std::string list = std::string(nameOf(file.format).phrase) + (file.endingMisleads ? ", misnamed" : "") + "\n" +
                       file.encoding.name + ", " + kFrom[static_cast<size_t>(file.encoding.from)] + "\n";
    if (file.rate.thousandths != 0) list += "rate " + std::to_string(file.rate.thousandths) + "\n";
    for (const Language& language : file.languages)
        list += "class " + language.name + ", " + std::to_string(language.entries) + "\n";
    for (const Place& place : file.strayLines) list += "stray line " + std::to_string(place.line) + "\n";
    for (const std::vector<Entry>* entries : {&file.entries, &file.unseen})
        for (const Entry& entry : *entries)
            list += std::to_string(entry.place.line) + "@" + std::to_string(entry.place.offset) +
                    (entries == &file.unseen ? " unseen " : " ") + listed(entry, file.languages.size() > 1) + "\n";
    return list;
}

TEST(MeantFiles, AreReadAsListed) {
    ASSERT_LE(12u, files().size());
    for (const fs::path& path : files()) {
        Options options;
        options.ending = path.extension().string().substr(1);
        const std::string listing = listingOf(read(contentOf(path), options, systemEncodings()));
        const std::string beside = path.string() + ".meant";
        if (getenv("VXSUBTITLE_ACCEPT_MEANT") != nullptr) std::ofstream(beside, std::ios::binary) << listing;
        EXPECT_EQ(contentOf(beside), listing) << path;
    }
}

/// Whatever is cut off or changed, every text is UTF-8 and every place within the file.
TEST(MeantFiles, AnyPartOfThemCanBeRead) {
    for (const fs::path& path : files()) {
        const std::string whole = contentOf(path);
        Options options;
        options.ending = path.extension().string().substr(1);
        for (size_t size = 0; size <= whole.size(); size += 1 + size / 7) {
            for (const std::string& part : {whole.substr(0, size), whole.substr(size)}) {
                const File file = read(part, options, systemEncodings());
                for (const Entry& entry : file.entries) {
                    EXPECT_LT(entry.place.offset, part.size()) << path << " " << size;
                    EXPECT_LE(entry.behind, part.size()) << path << " " << size;
                    EXPECT_LE(entry.place.offset, entry.behind) << path << " " << size;
                }
            }
        }
    }
}

/// A reader that looks back or ahead without bound would not come to an end here.
TEST(MeantFiles, PiecesInGreatNumberTakeLinearTime) {
    for (const char* piece : {"\r",
                              "\n",
                              "1\n",
                              "\n1\n",
                              "0:0:1,0 --> 0:0:2,0\n",
                              "0:0:1,0 --> 0:0:2,0",
                              "1\n0:0:1,0 --> 0:0:2,0\n\n",
                              "- ",
                              "[00:00:01]\n",
                              "[DELAY]\n",
                              "0:0:1.1,0:0:2.1\n",
                              "{1}{2}",
                              "{1}{}a\n",
                              "{1}{1}25\n",
                              "0:0:1:1 0:0:2:1 a\n",
                              "0:0:1,1=a\n",
                              "0:0:1.1:a\n",
                              "0:0:1:a\n",
                              "Format: Text,",
                              "Dialogue: 0,0:0:1.0,0:0:2.0,,,,,,,a\n",
                              "Dialogue: ,",
                              "<SYNC Start=1>",
                              "<SYNC Start=1><P Class=a>b",
                              "<SYNC ",
                              "<P ",
                              "<!--",
                              "<!-- -->",
                              "<",
                              "\xE9",
                              "\xE9\n",
                              "{\\p1}"}) {
        std::string text = "1\n00:00:01,000 --> 00:00:02,000\n<SYNC Start=1>";
        while (text.size() < 300000) text += piece;
        const File file = read(text, {}, systemEncodings());
        EXPECT_LE(file.entries.size() + file.unseen.size(), text.size()) << piece;
    }
    std::string classes;
    for (int i = 0; i < 20000; ++i) classes += "<SYNC Start=1><P Class=c" + std::to_string(i) + ">a<SYNC Start=2>";
    EXPECT_EQ(20000u, read(classes, {}, systemEncodings()).entries.size());
}

}  // namespace
}  // namespace meant
