#include "tools/vxsub/Output.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace {

struct Written {
    std::string out, err;
};

std::string readAll(int fd) {
    std::string text;
    char chunk[4096];
    for (ssize_t n; (n = read(fd, chunk, sizeof chunk)) > 0;) text.append(chunk, size_t(n));
    close(fd);
    return text;
}

/// What a process that runs `body` writes.
Written writtenBy(const std::function<void()>& body) {
    int out[2], err[2];
    if (pipe(out) != 0 || pipe(err) != 0) abort();
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        for (const int fd : {out[0], out[1], err[0], err[1]}) close(fd);
        body();
        fflush(stdout);
        _exit(0);
    }
    close(out[1]);
    close(err[1]);
    Written written = {readAll(out[0]), readAll(err[0])};
    waitpid(child, nullptr, 0);
    return written;
}

TEST(Output, KeepsWhatTheLibraryPrintsOutOfItsOwn) {
    const Written written = writtenBy([] {
        vxsub::Output out;
        printf("a line of the library\n");
        out.line("a line of ours");
        out.flush();
    });
    EXPECT_EQ(written.out, "a line of ours\n");
    EXPECT_EQ(written.err, "");
}

TEST(Output, ShowsWhatTheLibraryPrintsOnStandardErrorWhenTold) {
    const Written written = writtenBy([] {
        vxsub::Output out;
        out.showForeignOutput();
        printf("a line of the library\n");
        out.line("a line of ours");
        out.flush();
    });
    EXPECT_EQ(written.out, "a line of ours\n");
    EXPECT_EQ(written.err, "a line of the library\n");
}

TEST(Output, WritesMoreThanItHolds) {
    const std::string line(999, 'x');
    const Written written = writtenBy([&] {
        vxsub::Output out;
        for (int i = 0; i < 1000; ++i) out.line(line);
        out.write(std::string(200000, 'y'));
        out.flush();
    });
    ASSERT_EQ(written.out.size(), 1200000u);
    EXPECT_EQ(written.out.find(line + "\n" + line + "\n"), 0u);
    EXPECT_EQ(written.out.find('y'), 1000000u);
}

TEST(Complain, WritesOneLineWhateverTheMessageHolds) {
    const Written written = writtenBy([] { vxsub::complain("no\nline\x1b[2J break\xFF"); });
    EXPECT_EQ(written.err, "vxsub: no\\nline\\x1b[2J break\uFFFD\n");
    EXPECT_EQ(written.out, "");
}

}  // namespace
