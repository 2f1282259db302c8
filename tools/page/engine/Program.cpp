#include "Program.h"

#include <android-base/properties.h>
#include <android/log.h>
#include <fcntl.h>
#include <unistd.h>

#include "tools/vxsub/Program.h"

namespace page {
namespace {

/// A descriptor that writes into a file, for as long as it lives.
class Redirected {
public:
    Redirected(int fd, const char* path) : mFd(fd), mBefore(dup(fd)) {
        const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(file, mFd);
        close(file);
    }
    ~Redirected() {
        dup2(mBefore, mFd);
        close(mBefore);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

private:
    int mFd, mBefore;
};

}  // namespace

void forgetSettings() {
    android::base::SetProperty("vendor.quarn.subtitle.language", "");
    __android_log_set_logger(nullptr);
    __android_log_set_minimum_priority(ANDROID_LOG_DEFAULT);
}

int runProgram(std::vector<std::string> words) {
    forgetSettings();
    words.insert(words.begin(), "vxsub");
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const Redirected out(STDOUT_FILENO, "/out"), errors(STDERR_FILENO, "/errors");
    return vxsub::run(int(words.size()), arguments.data());
}

}  // namespace page
