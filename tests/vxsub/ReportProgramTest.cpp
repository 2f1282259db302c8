// vxsub report: what the page holds, how large it gets, what it never overwrites, how it ends.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <zlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "tests/vxsub/Program.h"
#include "tools/samples/VobSubMaker.h"

namespace {

namespace fs = std::filesystem;
using test::Outcome;
using test::runVxsub;

const std::string kFront = "<!doctype html><script>look('<!--files-->')</script>", kBack = "</body>\n";
const std::string kPage = kFront + "<!--files-->" + kBack;
const std::string kMovie = "1\n00:00:01,000 --> 00:00:02,000\na\n\n";

struct Embedded {
    std::string name, bytes;
};

std::string fromBase64(const std::string& text) {
    static const std::string kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0, count = 0;
    for (const char c : text) {
        const size_t digit = kDigits.find(c);
        if (digit == kDigits.npos) break;
        bits = bits << 6 | unsigned(digit);
        if ((count += 6) < 8) continue;
        count -= 8;
        bytes.push_back(char(bits >> count & 0xFF));
    }
    return bytes;
}

std::string inflated(const std::string& packed) {
    std::string bytes(1 << 22, '\0');
    uLongf size = uLongf(bytes.size());
    const int result = uncompress(reinterpret_cast<Bytef*>(bytes.data()), &size,
                                  reinterpret_cast<const Bytef*>(packed.data()), uLong(packed.size()));
    bytes.resize(result == Z_OK ? size : 0);
    return bytes;
}

/// The files of a report that was made of `kPage`.
std::vector<Embedded> filesIn(const std::string& report) {
    std::vector<Embedded> files;
    const std::string begin = "<script type=\"application/octet-stream+deflate\" data-name=\"";
    EXPECT_EQ(kFront, report.substr(0, kFront.size()));
    EXPECT_EQ(kBack, report.substr(report.size() - kBack.size()));
    for (size_t at = report.find(begin); at != report.npos; at = report.find(begin, at)) {
        at += begin.size();
        const size_t name = report.find("\">", at), end = report.find("</script>\n", name);
        files.push_back({report.substr(at, name - at), inflated(fromBase64(report.substr(name + 2, end - name - 2)))});
    }
    return files;
}

class VxsubReport : public testing::Test {
protected:
    VxsubReport() {
        char name[] = "/tmp/vxsub-report-XXXXXX";
        if (mkdtemp(name) == nullptr) abort();
        mFolder = name;
        mPage = put("page.html", kPage);
        mOut = path("out.html");
    }
    ~VxsubReport() override { fs::remove_all(mFolder); }

    std::string path(const std::string& name) const { return mFolder / name; }
    std::string put(const std::string& name, const std::string& bytes) const {
        fs::create_directories(fs::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    std::string get(const std::string& path) const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    Outcome report(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"report", "--page", mPage, "-o", mOut});
        return runVxsub(arguments);
    }

    fs::path mFolder;
    std::string mPage, mOut;
};

TEST_F(VxsubReport, HoldsTheFile) {
    const Outcome outcome = report({put("movie.srt", kMovie)});
    EXPECT_EQ("written " + mOut + ": the page with 1 file\n", outcome.out);
    EXPECT_EQ("", outcome.err);
    EXPECT_EQ(0, outcome.status);
    const std::vector<Embedded> files = filesIn(get(mOut));
    ASSERT_EQ(1u, files.size());
    EXPECT_EQ("movie.srt", files[0].name);
    EXPECT_EQ(kMovie, files[0].bytes);
}

TEST_F(VxsubReport, HoldsFilesOfEverySize) {
    for (size_t size = 0; size < 8; ++size) {
        const std::string bytes(size, 'x');
        EXPECT_EQ(0, report({"--force", put("movie.srt", bytes)}).status);
        EXPECT_EQ(bytes, filesIn(get(mOut)).at(0).bytes) << size;
    }
}

TEST_F(VxsubReport, IndexTakesItsPictures) {
    ASSERT_TRUE(samples::demoVobSub().write(path("movie.idx")));
    EXPECT_EQ("written " + mOut + ": the page with 2 files\n", report({path("movie.idx")}).out);
    const std::vector<Embedded> files = filesIn(get(mOut));
    ASSERT_EQ(2u, files.size());
    EXPECT_EQ("movie.idx", files[0].name);
    EXPECT_EQ("movie.sub", files[1].name);
    EXPECT_EQ(get(path("movie.sub")), files[1].bytes);
}

TEST_F(VxsubReport, BothHalvesOfAPairAreOneFile) {
    ASSERT_TRUE(samples::demoVobSub().write(path("movie.idx")));
    const std::vector<std::string> halves[] = {{path("movie.idx"), path("movie.sub")},
                                               {path("movie.sub"), path("movie.idx")}};
    for (const std::vector<std::string>& named : halves) {
        fs::remove(mOut);
        EXPECT_EQ(0, report(named).status);
        const std::vector<Embedded> files = filesIn(get(mOut));
        ASSERT_EQ(2u, files.size());
        EXPECT_EQ("movie.idx", files[0].name);
        EXPECT_EQ("movie.sub", files[1].name);
    }
}

TEST_F(VxsubReport, NamesDiffer) {
    const std::string other = put("other/Movie.srt", "b"), third = put("third/movie.srt", "c");
    EXPECT_EQ(0, report({put("movie.srt", "a"), other, third}).status);
    const std::vector<Embedded> files = filesIn(get(mOut));
    ASSERT_EQ(3u, files.size());
    EXPECT_EQ("movie.srt", files[0].name);
    EXPECT_EQ("Movie (2).srt", files[1].name);
    EXPECT_EQ("b", files[1].bytes);
    EXPECT_EQ("movie (3).srt", files[2].name);
}

/// The page puts an index and a .sub of its name together: only those that lie together are a pair.
TEST_F(VxsubReport, StrangersOfOneNameAreNoPair) {
    const std::string index = put("movie.idx", "timestamp: 00:00:01:000, filepos: 000000000\n");
    const std::string texts = put("other/Movie.sub", "{1}{2}a\n");
    EXPECT_EQ(0, report({index, texts}).status);
    EXPECT_EQ("movie.idx", filesIn(get(mOut)).at(0).name);
    EXPECT_EQ("Movie (2).sub", filesIn(get(mOut)).at(1).name);
    EXPECT_EQ(0, report({"--force", texts, index}).status);
    EXPECT_EQ("Movie.sub", filesIn(get(mOut)).at(0).name);
    EXPECT_EQ("movie (2).idx", filesIn(get(mOut)).at(1).name);
}

TEST_F(VxsubReport, NamesAreWrittenForHtml) {
    EXPECT_EQ(0, report({put("a\"<b>&c\r\n.srt", kMovie)}).status);
    EXPECT_EQ("a&#34;&#60;b&#62;&#38;c&#13;&#10;.srt", filesIn(get(mOut)).at(0).name);
}

TEST_F(VxsubReport, SaysTheLinkToAnEntry) {
    mOut = put("folder of/100%#1?.html", "");
    const std::string folder = mFolder;
    EXPECT_EQ("written " + mOut + ": the page with 1 file\n  to entry 0 of \u00e4.srt: " + folder +
                  "/folder%20of/100%25%231%3F.html#file=%C3%A4.srt&entry=0\n",
              report({"--force", "--entry", "0", put("\u00e4.srt", kMovie)}).out);
    mOut = path("out.html");
    EXPECT_EQ("written " + mOut + ": the page with 1 file\n  to entry 12 of a b&.srt: " + mOut +
                  "#file=a%20b%26.srt&entry=12\n",
              report({"--entry", "12", put("a b&.srt", kMovie)}).out);
}

/// Bytes that nothing compresses.
TEST_F(VxsubReport, IsAtMostThePageAndOnePointFourTimesTheFiles) {
    std::mt19937 random(1);
    std::string bytes(1 << 20, '\0');
    for (char& byte : bytes) byte = char(random());
    EXPECT_EQ(0, report({put("movie.srt", bytes)}).status);
    EXPECT_EQ(bytes, filesIn(get(mOut)).at(0).bytes);
    EXPECT_LE(fs::file_size(mOut), kPage.size() + bytes.size() * 14 / 10);
}

TEST_F(VxsubReport, OverwritesOnRequestAlone) {
    put("out.html", "mine");
    const std::string movie = put("movie.srt", kMovie);
    const Outcome outcome = report({movie});
    EXPECT_EQ("vxsub: cannot write " + mOut + ": there is a file of that name; --force overwrites it\n", outcome.err);
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ("mine", get(mOut));
    EXPECT_EQ(0, report({"--force", movie}).status);
    EXPECT_EQ(kMovie, filesIn(get(mOut)).at(0).bytes);
}

TEST_F(VxsubReport, WhatIsReadIsNeverOverwritten) {
    ASSERT_TRUE(samples::demoVobSub().write(path("pair.idx")));
    const std::string movie = put("movie.srt", kMovie), pair = path("pair.idx"), pictures = get(path("pair.sub"));
    const auto errorFor = [&](const std::string& output) {
        mOut = output;
        return report({"--force", movie, pair}).err;
    };
    for (const std::string& source : {movie, pair, path("pair.sub")})
        EXPECT_EQ("vxsub: cannot write " + source + ": it is one of the files\n", errorFor(source));
    EXPECT_EQ("vxsub: cannot write " + mPage + ": it is the page itself\n", errorFor(mPage));
    EXPECT_EQ(kMovie, get(movie));
    EXPECT_EQ(pictures, get(path("pair.sub")));
    EXPECT_EQ(kPage, get(mPage));
}

TEST_F(VxsubReport, WhatIsMissingIsSaid) {
    const std::string movie = put("movie.srt", kMovie);
    EXPECT_EQ("vxsub: " + path("none.srt") + ": No such file or directory\n", report({path("none.srt")}).err);
    EXPECT_EQ("vxsub: " + movie + ": is not the inspector's page\n",
              runVxsub({"report", "--page", movie, "-o", mOut, movie}).err);
    EXPECT_FALSE(fs::exists(mOut));
}

/// As a program without a page beside it.
TEST_F(VxsubReport, SaysHowThePageIsBuilt) {
    fs::create_directory(path("bin"));
    fs::copy_file(VXSUB_PROGRAM, path("bin/vxsub"));
    const std::string movie = put("movie.srt", kMovie);
    const auto run = [&] {
        return runVxsub({}, "'" + path("bin/vxsub") + "' report -o '" + mOut + "' '" + movie + "'");
    };
    const Outcome outcome = run();
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ(
        "vxsub: the page that a report is made of has not been built: \"make page\" in the sources builds it, and "
        "--page names one that lies elsewhere\n",
        outcome.err);
    put("share/vxsub/vxsub.html", kPage);
    EXPECT_EQ(0, run().status);
    EXPECT_EQ(kMovie, filesIn(get(mOut)).at(0).bytes);
}

}  // namespace
