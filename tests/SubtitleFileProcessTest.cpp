// The file source: how a file is reached, what is logged, what a failure looks like and when descriptors close.
#include "subtitle/SubtitleFileProcess.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/Interpose.h"

namespace {

using namespace android;
using namespace test;
using Lines = std::vector<LogLine>;
using Calls = std::vector<std::string>;
using File = SubtitleFileProcess;

constexpr U64 kFailure = ~U64{0};

U8* bytesOf(const char* path) { return reinterpret_cast<U8*>(const_cast<char*>(path)); }
U8* bytesOf(std::string& path) { return reinterpret_cast<U8*>(path.data()); }

LogLine line(const std::string& text) { return {3, "SubtitleFileProcess", text}; }

/// What the source gives from where it stands, at most `n` bytes.
std::string read(File& file, U64 n) {
    std::string content(static_cast<size_t>(n), '?');
    const U64 count = file.Read(reinterpret_cast<U8*>(content.data()), n);
    EXPECT_LE(count, n);
    content.resize(static_cast<size_t>(std::min(count, n)));
    return content;
}

/// Closed when the test ends, however it ends.
struct Closed : File {
    using File::File;
    ~Closed() { Close(); }
};

const char kFailedLine[] = "fopen fialded fun=Open line=110\n";

// -------------------------------------------------------------------------------------------- construction

TEST(FileSource, FromAPath) {
    const File file(bytesOf("/movies/a.srt"));
    EXPECT_EQ(File::SOURCE_TYPE_URL, file.mSourceType);
    EXPECT_EQ(nullptr, file.fpFile);
    EXPECT_EQ(-1, file.mFd);
    EXPECT_STREQ("/movies/a.srt", file.pFileName);
    EXPECT_TRUE(std::all_of(file.pFileName + 13, file.pFileName + 512, [](char c) { return c == 0; }));
}

TEST(FileSource, FromADescriptorKeepsADuplicate) {
    const TempFile temp("content");
    Closed file(temp.fd(), 100, 50);
    EXPECT_EQ(File::SOURCE_TYPE_URL, file.mSourceType);  // not SOURCE_TYPE_FD
    EXPECT_EQ(nullptr, file.fpFile);
    EXPECT_NE(temp.fd(), file.mFd);
    struct stat mine, theirs;
    ASSERT_EQ(0, fstat(file.mFd, &mine));
    ASSERT_EQ(0, fstat(temp.fd(), &theirs));
    EXPECT_EQ(theirs.st_ino, mine.st_ino);
    EXPECT_EQ(100, file.mOffset);
    EXPECT_EQ(50, file.mLength);
    EXPECT_EQ(0, file.pFileName[0]);
}

TEST(FileSource, FromAPathWithOffsetAndLength) {
    const File file(bytesOf("/movies/a.srt"), 7, -9);
    EXPECT_EQ(File::SOURCE_TYPE_URL_OFFSET_LENGTH, file.mSourceType);
    EXPECT_EQ(nullptr, file.fpFile);
    EXPECT_EQ(-1, file.mFd);
    EXPECT_STREQ("/movies/a.srt", file.pFileName);
    EXPECT_EQ(7, file.mOffset);
    EXPECT_EQ(-9, file.mLength);
}

TEST(FileSource, ANullPathIsEmpty) {
    const File url(nullptr);
    const File part(nullptr, 1, 2);
    for (const File* file : {&url, &part}) {
        EXPECT_TRUE(std::all_of(file->pFileName, file->pFileName + 512, [](char c) { return c == 0; }));
    }
}

// kept(file-long-path)
TEST(FileSource, ALongPathFillsTheFieldWithoutATerminator) {
    for (const size_t length : {1, 510, 511, 512, 513, 600}) {
        SCOPED_TRACE(length);
        std::string path(length, 'p');
        path.back() = 'q';
        const File url(bytesOf(path));
        const File part(bytesOf(path), 0, 0);
        const size_t kept = std::min<size_t>(length, 512);
        for (const File* file : {&url, &part}) {
            EXPECT_EQ(path.substr(0, kept), std::string(file->pFileName, kept));
            EXPECT_TRUE(std::all_of(file->pFileName + kept, file->pFileName + 512, [](char c) { return c == 0; }));
        }
        EXPECT_EQ(-1, url.mFd);  // the field behind the name
        EXPECT_EQ(nullptr, url.fpFile);
    }
}

TEST(FileSource, ADescriptorThatCannotBeDuplicatedIsNone) {
    const File closed(-1, 0, 0);
    EXPECT_EQ(-1, closed.mFd);
    const TempFile temp("content");
    const CallFails fails("dup", 1);
    const File file(temp.fd(), 0, 0);
    EXPECT_EQ(-1, file.mFd);
}

TEST(FileSource, TheDestructorLeavesClosingToTheOwner) {
    const TempFile temp("content");
    int fd = -1;
    {
        const File file(temp.fd(), 0, 0);
        fd = file.mFd;
    }
    EXPECT_EQ(0, close(fd));
}

// -------------------------------------------------------------------------------------------- Open, by path

TEST(FileSourceByPath, OpensReadsAndMeasures) {
    const TempFile temp("Hello, file");
    Closed file(bytesOf(temp.path()));
    const LogCapture log;
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ((Lines{line("Open filename = " + std::string(temp.path()) + "\n")}), log.lines());
    EXPECT_EQ(11u, file.Length());
    EXPECT_EQ("Hello, file", read(file, 11));
    EXPECT_EQ("", read(file, 11));
    EXPECT_EQ(11u, file.Length());  // and back to the start
    EXPECT_EQ("Hello", read(file, 5));
    EXPECT_EQ(", file", read(file, 100));
}

TEST(FileSourceByPath, ReportsAMissingFile) {
    Closed file(bytesOf("/nowhere/a.srt"));
    const LogCapture log;
    EXPECT_EQ(0, file.Open());
    EXPECT_EQ((Lines{line("Open filename = /nowhere/a.srt\n"), line(kFailedLine)}), log.lines());
    EXPECT_EQ(nullptr, file.fpFile);
}

TEST(FileSourceByPath, LogsTheFirst512BytesOfALongPath) {
    for (const size_t length : {511, 512, 600}) {
        SCOPED_TRACE(length);
        std::string path(length, 'p');
        Closed file(bytesOf(path));
        const LogCapture log;
        EXPECT_EQ(0, file.Open());
        EXPECT_EQ((Lines{line("Open filename = " + path.substr(0, 512) + "\n"), line(kFailedLine)}), log.lines());
    }
}

TEST(FileSourceByPath, OpensAPathOf511Bytes) {
    const TempFile temp("Hello");
    std::string path = temp.path();
    const size_t slash = path.rfind('/');
    path.insert(slash, 511 - path.size(), '/');
    ASSERT_EQ(511u, path.size());
    Closed file(bytesOf(path));
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ("Hello", read(file, 5));
}

TEST(FileSourceByPath, AFileOfNoBytesIsOpenToo) {
    const TempFile temp("");
    Closed file(bytesOf(temp.path()));
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ(0u, file.Length());
    EXPECT_EQ("", read(file, 10));
}

// kept(file-descriptor-0): and it is never closed
TEST(FileSourceByPath, ADescriptorOfZeroCountsAsNone) {
    const TempFile temp("content");
    Closed file(bytesOf(temp.path()));
    file.mFd = 0;
    const LogCapture log;
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ((Lines{line("Open filename = " + std::string(temp.path()) + "\n")}), log.lines());
    EXPECT_EQ("content", read(file, 7));
    file.Close();
    EXPECT_EQ(0, file.mFd) << "descriptor 0 is never closed";
    file.mFd = -1;
}

// -------------------------------------------------------------------------------------- Open, by descriptor

// kept(file-whole)
TEST(FileSourceByDescriptor, ReadsTheWholeFileWhateverOffsetAndLength) {
    const std::string content = std::string(100, 'a') + std::string(50, 'b') + std::string(25, 'c');
    const TempFile temp(content);
    Closed file(temp.fd(), 100, 50);
    const LogCapture log;
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ((Lines{line("Open fd =" + std::to_string(file.mFd) + "\n")}), log.lines());
    EXPECT_EQ(content, read(file, 200));
    EXPECT_EQ(175u, file.Length());
    EXPECT_EQ(content, read(file, 200));
}

TEST(FileSourceByDescriptor, IsNotMovedByOpening) {
    const TempFile temp("0123456789");
    ASSERT_EQ(4, lseek(temp.fd(), 4, SEEK_SET));
    Closed file(temp.fd(), 2, 3);
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ("456789", read(file, 10)) << "where the caller left it";
    EXPECT_EQ(10u, file.Length());
    EXPECT_EQ("0123456789", read(file, 10)) << "from the first byte, once the length was asked for";
}

TEST(FileSourceByDescriptor, DescriptorOneIsOne) {
    const TempFile temp("content");
    Closed file(temp.fd(), 0, 0);
    const int kept = file.mFd;
    const int output = dup(1);
    ASSERT_GE(output, 0);
    ASSERT_EQ(1, dup2(kept, 1));
    file.mFd = 1;
    const LogCapture log;
    const S32 opened = file.Open();
    const std::string content = opened == 1 ? read(file, 7) : "";
    file.Close();
    const int closed = fcntl(1, F_GETFD);
    dup2(output, 1);
    close(output);
    close(kept);
    EXPECT_EQ(1, opened);
    EXPECT_EQ((Lines{line("Open fd =1\n")}), log.lines());
    EXPECT_EQ("content", content);
    EXPECT_EQ(-1, closed) << "descriptor 1 is closed as any other";
}

// kept(file-descriptor-0)
TEST(FileSourceByDescriptor, ADuplicateThatIsZeroOpensTheEmptyPathAndFails) {
    const TempFile temp("content");
    Closed file(temp.fd(), 0, 7);
    close(file.mFd);
    file.mFd = 0;  // as if it had come out so
    const LogCapture log;
    EXPECT_EQ(0, file.Open());
    EXPECT_EQ((Lines{line("Open filename = \n"), line(kFailedLine)}), log.lines());
    file.mFd = -1;
}

// The stream's own, which it closes.
TEST(FileSourceByDescriptor, AStreamMayStandOnDescriptorZero) {
    const TempFile temp("content");
    Closed file(temp.fd(), 0, 7);
    const int input = dup(0);
    close(0);
    const S32 opened = file.Open();
    const int descriptor = opened == 1 ? fileno(file.fpFile) : -1;
    const std::string content = opened == 1 ? read(file, 7) : "";
    file.Close();
    const int closed = fcntl(0, F_GETFD);
    if (input >= 0) {
        dup2(input, 0);
        close(input);
    }
    EXPECT_EQ(1, opened);
    EXPECT_EQ(0, descriptor);
    EXPECT_EQ("content", content);
    EXPECT_EQ(-1, closed);
}

TEST(FileSourceByDescriptor, AClosedDescriptorFails) {
    Closed file(-1, 0, 0);
    const LogCapture log;
    EXPECT_EQ(0, file.Open());
    EXPECT_EQ((Lines{line("Open filename = \n"), line(kFailedLine)}), log.lines());
}

TEST(FileSourceByDescriptor, FailsWhenNoStreamResults) {
    for (const char* call : {"dup", "fdopen"}) {
        SCOPED_TRACE(call);
        const TempFile temp("content");
        Closed file(temp.fd(), 0, 0);
        const unsigned before = openDescriptors();
        const LogCapture log;
        {
            const CallFails fails(call, 1);
            EXPECT_EQ(0, file.Open());
            EXPECT_EQ(1, fails.failed());
        }
        EXPECT_EQ((Lines{line("Open fd =" + std::to_string(file.mFd) + "\n"), line(kFailedLine)}), log.lines());
        EXPECT_EQ(nullptr, file.fpFile);
        EXPECT_EQ(before, openDescriptors());
        EXPECT_EQ(1, file.Open()) << "a later call may succeed";
    }
}

TEST(FileSourceByDescriptor, IsClosedOnExecWhenTheCallersIs) {
    const TempFile temp("content");
    for (const int flags : {FD_CLOEXEC, 0}) {
        ASSERT_EQ(0, fcntl(temp.fd(), F_SETFD, flags));
        Closed file(temp.fd(), 0, 0);
        EXPECT_EQ(flags, fcntl(file.mFd, F_GETFD));
        for (const auto type : {File::SOURCE_TYPE_URL, File::SOURCE_TYPE_URL_OFFSET_LENGTH}) {
            file.mSourceType = type;
            ASSERT_EQ(1, file.Open());
            EXPECT_EQ(flags, fcntl(fileno(file.fpFile), F_GETFD)) << type;
        }
    }
}

TEST(FileSource, APathsStreamIsClosedOnExec) {
    const TempFile temp("content");
    Closed url(bytesOf(temp.path())), part(bytesOf(temp.path()), 1, 2);
    for (File* file : {static_cast<File*>(&url), static_cast<File*>(&part)}) {
        ASSERT_EQ(1, file->Open());
        EXPECT_EQ(FD_CLOEXEC, fcntl(fileno(file->fpFile), F_GETFD));
    }
}

TEST(FileSourceByDescriptor, LeavesTheCallersDescriptorAlone) {
    const TempFile temp("content");
    {
        Closed file(temp.fd(), 0, 0);
        file.Open();
    }
    EXPECT_NE(-1, fcntl(temp.fd(), F_GETFD));
}

TEST(FileSourceByDescriptor, APipeHasNoLength) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    {
        Closed file(ends[0], 0, 0);
        EXPECT_EQ(1, file.Open());
        EXPECT_EQ(kFailure, file.Length());
    }
    close(ends[0]);
    close(ends[1]);
}

// --------------------------------------------------------------------------------------- a part of a file

TEST(FileSourcePart, StartsAtItsOffset) {
    const TempFile temp("0123456789");
    Closed file(bytesOf(temp.path()), 4, 3);
    const LogCapture log;
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ((Lines{line("Open  " + std::string(temp.path()) + "    offset \n")}), log.lines());
    EXPECT_EQ(3u, file.Length());
    EXPECT_EQ("456", read(file, 3));
    EXPECT_EQ("789", read(file, 100)) << "the length does not bound the reading";
}

TEST(FileSourcePart, AnswersItsLengthWithoutTheFile) {
    File file(bytesOf("/nowhere"), 0, 123456789012);
    EXPECT_EQ(123456789012u, file.Length());
    File negative(bytesOf("/nowhere"), 0, -1);
    EXPECT_EQ(kFailure, negative.Length());
}

TEST(FileSourcePart, FailsQuietlyWithoutAFile) {
    Closed file(bytesOf("/nowhere/a.srt"), 0, 3);
    const LogCapture log;
    EXPECT_EQ(0, file.Open());
    EXPECT_EQ((Lines{line("Open  /nowhere/a.srt    offset \n")}), log.lines()) << "no second line for this kind";
}

TEST(FileSourcePart, TakesTheOffsetsLow32BitsAsASignedNumber) {
    const TempFile temp("0123456789");
    const struct {
        S64 offset;
        S32 opened;
        const char* content;
    } kRows[] = {
        {0, 1, "0123456789"},
        {9, 1, "9"},
        {10, 1, ""},
        {1000, 1, ""},                      // behind the end: nothing to read
        {(S64{1} << 32) + 4, 1, "456789"},  // the high half is lost
        {-1, 0, ""},
        {0x80000000, 0, ""},  // negative as 32 bits
        {0x7FFFFFFF, 1, ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.offset);
        Closed file(bytesOf(temp.path()), row.offset, 10);
        EXPECT_EQ(row.opened, file.Open());
        if (row.opened == 1) {
            EXPECT_EQ(row.content, read(file, 10));
        }
    }
}

TEST(FileSourcePart, FailsWhenTheSeekFails) {
    const TempFile temp("0123456789");
    Closed file(bytesOf(temp.path()), 4, 3);
    const CallFails fails("fseek", 1);
    EXPECT_EQ(0, file.Open());
}

// No constructor combines the two, but the fields are the player's to set; 0 is a descriptor here.
TEST(FileSourcePart, PrefersADescriptor) {
    const TempFile named("by the name"), open("by the descriptor");
    Closed file(bytesOf(named.path()), 3, 3);
    file.mFd = dup(open.fd());
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ("the descriptor", read(file, 100));

    const int input = dup(0);
    ASSERT_EQ(0, dup2(open.fd(), 0));
    Closed zero(bytesOf(named.path()), 3, 3);
    zero.mFd = 0;
    EXPECT_EQ(1, zero.Open());
    EXPECT_EQ("the descriptor", read(zero, 100));
    zero.Close();
    if (input >= 0) {
        dup2(input, 0);
        close(input);
    } else {
        close(0);
    }
}

// -------------------------------------------------------------------------------------- the bare descriptor

struct Bare : Closed {
    explicit Bare(int fd, S64 offset = 0) : Closed(fd, offset, 0) { mSourceType = SOURCE_TYPE_FD; }
};

TEST(FileSourceBare, SeeksReadsAndMeasures) {
    const TempFile temp("0123456789");
    Bare file(temp.fd(), 4);
    const LogCapture log;
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ((Lines{line("check fd " + std::to_string(file.mFd) + "\n")}), log.lines());
    EXPECT_EQ(nullptr, file.fpFile);
    EXPECT_EQ("456", read(file, 3));
    EXPECT_EQ("789", read(file, 100));
    EXPECT_EQ(10u, file.Length());
    EXPECT_EQ("0123456789", read(file, 100)) << "Length goes to the start, not to the offset";
}

TEST(FileSourceBare, RefusesANegativeDescriptorAndABadOffset) {
    Bare none(-1);
    const LogCapture log;
    EXPECT_EQ(0, none.Open());
    EXPECT_EQ((Lines{line("check fd -1\n")}), log.lines());

    const TempFile temp("0123456789");
    Bare before(temp.fd(), -1);
    EXPECT_EQ(0, before.Open());
    Bare high(temp.fd(), (S64{1} << 32) + 4);
    EXPECT_EQ(1, high.Open());
    EXPECT_EQ("456789", read(high, 100));
}

TEST(FileSourceBare, DescriptorZeroIsOneHere) {
    const TempFile temp("content");
    const int input = dup(0);
    ASSERT_EQ(0, dup2(temp.fd(), 0));
    Bare file(-1);
    file.mFd = 0;
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ("content", read(file, 100));
    file.Close();
    EXPECT_EQ(0, file.mFd);  // but it is not closed
    EXPECT_NE(-1, fcntl(0, F_GETFD));
    file.mFd = -1;
    if (input >= 0) {
        dup2(input, 0);
        close(input);
    } else {
        close(0);
    }
}

// kept(file-failure-size)
TEST(FileSourceBare, AFailureToReadIsAVeryLargeCount) {
    Bare file(-1);
    U8 buffer[4];
    EXPECT_EQ(0xFFFFFFFFu, file.Read(buffer, sizeof buffer));
    EXPECT_EQ(kFailure, file.Length());
}

TEST(FileSourceBare, ReadsTheLow32BitsOfACount) {
    const TempFile temp("0123456789");
    Bare file(temp.fd());
    file.Open();
    U8 buffer[10];
    EXPECT_EQ(4u, file.Read(buffer, (U64{1} << 32) + 4));
    EXPECT_EQ("456", read(file, 3));
}

// ------------------------------------------------------------------------------------------- the odd corners

TEST(FileSource, AnUnknownKindDoesNothing) {
    const TempFile temp("content");
    Closed file(temp.fd(), 0, 7);
    for (const U32 kind : {0u, 4u, 0xFFFFFFFFu}) {
        file.mSourceType = static_cast<File::FileSourceType>(kind);
        const LogCapture log;
        U8 buffer[4];
        EXPECT_EQ(0, file.Open());
        EXPECT_EQ(0u, file.Length());
        EXPECT_EQ(0u, file.Read(buffer, sizeof buffer));
        EXPECT_EQ(0, file.Close());
        EXPECT_EQ(Lines{}, log.lines());
        EXPECT_NE(-1, fcntl(file.mFd, F_GETFD)) << "not even closed";
    }
    file.mSourceType = File::SOURCE_TYPE_URL;
}

TEST(FileSource, ReadsNothingIntoNull) {
    const TempFile temp("content");
    Closed url(bytesOf(temp.path()));
    url.Open();
    EXPECT_EQ(0u, url.Read(nullptr, 7));
    EXPECT_EQ("content", read(url, 7));
    Bare bare(temp.fd());
    bare.Open();
    EXPECT_EQ(0u, bare.Read(nullptr, 7));
}

TEST(FileSource, WithoutAStreamNothingIsReadOrMeasured) {
    const TempFile temp("content");
    U8 buffer[4];
    Closed url(bytesOf(temp.path()));
    EXPECT_EQ(kFailure, url.Length());
    EXPECT_EQ(0u, url.Read(buffer, sizeof buffer));
    Closed part(bytesOf(temp.path()), 0, 4);
    EXPECT_EQ(0u, part.Read(buffer, sizeof buffer));
}

// kept(file-failure-size)
TEST(FileSource, AFailureToMeasureIsTheLargestLength) {
    const TempFile temp("content");
    Closed url(bytesOf(temp.path()));
    ASSERT_EQ(1, url.Open());
    {
        const CallFails fails("ftell", 1);
        EXPECT_EQ(kFailure, url.Length());
    }
    EXPECT_EQ(7u, url.Length());

    Bare bare(temp.fd());
    ASSERT_EQ(1, bare.Open());
    const CallFails fails("lseek", 1);
    EXPECT_EQ(kFailure, bare.Length());
}

// kept(file-seek)
TEST(FileSource, SeekMovesTheDescriptorAlone) {
    const TempFile temp("0123456789");
    Bare bare(temp.fd());
    bare.Open();
    EXPECT_EQ(0, bare.Seek(3, SEEK_SET));
    EXPECT_EQ("345", read(bare, 3));
    EXPECT_EQ(0, bare.Seek(2, SEEK_CUR));
    EXPECT_EQ("89", read(bare, 100));
    EXPECT_EQ(0, bare.Seek(static_cast<U32>(-4), SEEK_END));
    EXPECT_EQ("6789", read(bare, 100));
    EXPECT_EQ(0, bare.Seek(0, 99)) << "a failure too";
    EXPECT_EQ(0, bare.Seek(static_cast<U32>(-1), SEEK_SET));

    Closed url(temp.fd(), 0, 0);
    lseek(temp.fd(), 0, SEEK_SET);
    url.Open();
    EXPECT_EQ("01", read(url, 2));
    EXPECT_EQ(0, url.Seek(7, SEEK_SET));
    EXPECT_EQ("2345", read(url, 4)) << "the stream goes on where it was";

    Closed none(bytesOf(temp.path()));
    EXPECT_EQ(0, none.Seek(0, SEEK_SET));
}

TEST(FileSource, ClosesTheDescriptorFirstAndTheStreamAfterIt) {
    const TempFile temp("content");
    File file(temp.fd(), 0, 0);
    const int fd = file.mFd;
    ASSERT_EQ(1, file.Open());
    const int streamed = fileno(file.fpFile);
    EXPECT_NE(fd, streamed) << "a stream on a duplicate of its own";
    const FileCalls calls;
    EXPECT_EQ(0, file.Close());
    EXPECT_EQ((Calls{"close " + std::to_string(fd), "fclose " + std::to_string(streamed)}), calls.calls());
    EXPECT_EQ(-1, file.mFd);
    EXPECT_EQ(nullptr, file.fpFile);
    EXPECT_EQ(0, file.Close()) << "again";
    EXPECT_EQ(2u, calls.calls().size()) << "and nothing was left to close";
}

// Between the two closes another thread may get the descriptor's number; its file must stay open.
TEST(FileSource, ClosesNothingOfAnybodyElse) {
    const TempFile temp("content");
    File file(temp.fd(), 0, 0);
    ASSERT_EQ(1, file.Open());
    const int fd = file.mFd;
    close(fd);
    const int other = open(temp.path(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(fd, other);
    file.mFd = -1;  // as right behind its own first close
    file.Close();
    EXPECT_NE(-1, fcntl(other, F_GETFD));
    close(other);
}

TEST(FileSource, ClosesEveryKind) {
    const TempFile temp("content");
    const unsigned before = openDescriptors();
    File url(bytesOf(temp.path())), part(bytesOf(temp.path()), 0, 3), byFd(temp.fd(), 0, 0), bare(temp.fd(), 0, 0);
    bare.mSourceType = File::SOURCE_TYPE_FD;
    for (File* file : {&url, &part, &byFd, &bare}) {
        EXPECT_EQ(1, file->Open());
        EXPECT_EQ(0, file->Close());
        EXPECT_EQ(0, file->Close());
        EXPECT_EQ(-1, file->mFd);
        EXPECT_EQ(nullptr, file->fpFile);
    }
    EXPECT_EQ(before, openDescriptors());
}

TEST(FileSource, ASecondOpenClosesTheFirstStream) {
    const TempFile temp("content");
    const unsigned before = openDescriptors();
    {
        Closed url(bytesOf(temp.path())), part(bytesOf(temp.path()), 0, 3), byFd(temp.fd(), 0, 0);
        for (File* file : {static_cast<File*>(&url), static_cast<File*>(&part), static_cast<File*>(&byFd)}) {
            EXPECT_EQ(1, file->Open());
            const unsigned open = openDescriptors();
            EXPECT_EQ(1, file->Open());
            EXPECT_EQ(open, openDescriptors());
        }
    }
    EXPECT_EQ(before, openDescriptors());
}

TEST(FileSource, CanBeOpenedAgainAfterClose) {
    const TempFile temp("content");
    Closed file(bytesOf(temp.path()));
    file.Open();
    file.Close();
    EXPECT_EQ(1, file.Open());
    EXPECT_EQ("content", read(file, 7));
}

// A file may be longer than the device can measure: a position above 31 bits is a negative number.
TEST(FileSource, LengthIsASigned32BitNumber) {
    const TempFile temp("");
    const int fd = open(temp.path(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    const struct {
        S64 size;
        U64 length;  // where the position can be had at all
    } kRows[] = {
        {0x7FFFFFFF, 0x7FFFFFFF},
        {0x80000000, 0xFFFFFFFF80000000},
        {0xFFFFFFFF, 0xFFFFFFFFFFFFFFFF},
        {0x100000005, 5},
    };
    for (const auto& row : kRows) {
        if (ftruncate64(fd, row.size) != 0) GTEST_SKIP() << "the file system holds no file of " << row.size << " bytes";
        SCOPED_TRACE(row.size);
        Closed url(temp.fd(), 0, 0);
        Bare bare(temp.fd());
        ASSERT_EQ(1, url.Open());
        ASSERT_EQ(1, bare.Open());
        const U64 expected = sizeof(long) >= 8 || row.size <= 0x7FFFFFFF ? row.length : kFailure;
        EXPECT_EQ(expected, url.Length());
        EXPECT_EQ(expected, bare.Length());
    }
    close(fd);
}

}  // namespace
