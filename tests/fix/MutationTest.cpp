// Damaged files: whatever they hold, the copy opens, and all of it is shown as it was written.
//
// VX_MUTATIONS=20000 FixShownTest runs that many instead of the few of the suite; best built with the address
// sanitizer.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "tests/fix/Fixing.h"
#include "tests/fix/OpenedCopy.h"
#include "tools/fix/Index.h"
#include "tools/meant/SystemEncodings.h"
#include "tools/samples/VobSubMaker.h"

namespace fix {
namespace {

namespace fs = std::filesystem;

unsigned rounds() {
    const char* const text = getenv("VX_MUTATIONS");
    return text != nullptr ? static_cast<unsigned>(strtoul(text, nullptr, 10)) : 400;
}

struct Seed {
    std::string ending, bytes;
};

std::vector<Seed> seeds() {
    std::vector<Seed> files;
    for (const auto& entry : fs::directory_iterator(MEANT_FILES)) {
        if (entry.path().extension() == ".meant") continue;
        std::ifstream stream(entry.path(), std::ios::binary);
        files.push_back({entry.path().extension().string().substr(1),
                         {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()}});
    }
    std::sort(files.begin(), files.end(), [](const Seed& a, const Seed& b) { return a.bytes < b.bytes; });
    return files;
}

class Mutator {
public:
    explicit Mutator(unsigned seed) : mRandom(seed) {}

    size_t below(size_t n) { return n == 0 ? 0 : mRandom() % n; }

    std::string damaged(std::string data) {
        static const char* const kPieces[] = {
            "{",  "}",    "<",    ">",     "{y:i}",         "<b>",         "\r",
            "\n", "\r\n", "\n\n", "1",     "12:30, 13:30.", "-",           "00:00:01,000 --> 00:00:02,000",
            "|",  "\\N",  ",",    "&amp;", "\xE4\xB8\xAD",  "99999999999", "\t"};
        for (size_t n = 1 + below(10); n-- > 0 && !data.empty();) {
            const size_t at = below(data.size()), length = below(60);
            switch (below(5)) {
                case 0:
                    data[at] = static_cast<char>(below(256));
                    break;
                case 1:
                    data.erase(at, length);
                    break;
                case 2:
                    data.insert(at, data.substr(below(data.size()), length));
                    break;
                case 3:
                    data.insert(at, kPieces[below(std::size(kPieces))]);
                    break;
                default:
                    std::swap(data[at], data[below(data.size())]);
            }
        }
        return data;
    }

private:
    std::mt19937 mRandom;
};

Result fixedAs(const Seed& file, const Options& options) {
    meant::Options read;
    read.ending = file.ending;
    const meant::Source source(file.bytes, read, meant::systemEncodings());
    return fix(meant::read(file.bytes, read, meant::systemEncodings()), source, options);
}

TEST(FixMutations, CopiesShowWhatWasWritten) {
    const std::vector<Seed> files = seeds();
    Mutator mutator(1);
    Folder folder;
    for (unsigned round = 0; round < rounds(); ++round) {
        const Seed& seed = files[mutator.below(files.size())];
        const Seed damaged = {seed.ending, mutator.damaged(seed.bytes)};
        Options options;
        options.letters = round % 2 == 0 ? Letters::Utf8 : Letters::Utf16;
        const Result result = fixedAs(damaged, options);
        if (result.format == meant::Format::None) continue;
        const Seen shown = seen(folder, result);
        EXPECT_TRUE(shown.isAccepted) << round;
        EXPECT_EQ(result.pieces.size(), shown.right) << round << "\n" << result.bytes;
        EXPECT_EQ(0u, shown.odd + shown.others) << round;
        if (HasFailure()) return;
    }
}

TEST(FixMutations, KeptFormatsOpen) {
    const std::vector<Seed> files = seeds();
    Mutator mutator(2);
    Folder folder;
    size_t pieces = 0, wrong = 0;
    for (unsigned round = 0; round < rounds(); ++round) {
        const Seed& seed = files[mutator.below(files.size())];
        const Seed damaged = {seed.ending, mutator.damaged(seed.bytes)};
        Options options;
        options.keepFormat = true;
        const Result result = fixedAs(damaged, options);
        if (result.format == meant::Format::None || result.pieces.empty()) continue;
        const Seen shown = seen(folder, result);
        EXPECT_TRUE(shown.isAccepted) << round << "\n" << result.bytes;
        pieces += result.pieces.size();
        wrong += shown.others;
        if (HasFailure()) return;
    }
    EXPECT_LE(wrong * 20, pieces);
}

TEST(FixMutations, IndexesAreRead) {
    samples::Subpicture picture;
    picture.bitmap = samples::drawText({"HELLO"}, 3);
    const std::string stream = samples::packUnit(samples::encodeUnit(picture));
    const std::string index =
        "# VobSub index file, v7\nid: de, index: 0\ndelay: 00:00:01:000\ntimestamp: 00:00:01:000, filepos: 000000000\n";
    Mutator mutator(3);
    for (unsigned round = 0; round < rounds(); ++round) {
        const FixedIndex fixed = fixIndex(mutator.damaged(index), mutator.damaged(stream), {});
        EXPECT_EQ(fixed.refusal.empty(), !fixed.entries.empty());
        const FixedIndex again = fixIndex(fixed.bytes, stream, {});
        EXPECT_EQ(fixed.entries.size(), again.entries.size()) << fixed.bytes;
    }
}

}  // namespace
}  // namespace fix
