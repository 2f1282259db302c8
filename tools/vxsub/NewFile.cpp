#include "NewFile.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Errors.h"
#include "Formats.h"

namespace vxsub {

NewFile::NewFile(std::string path, const std::string& source, bool overwrites)
    : mPath(std::move(path)), mOverwrites(overwrites) {
    struct stat old = {}, original = {};
    const bool isTaken = stat(mPath.c_str(), &old) == 0;
    if (stat(source.c_str(), &original) != 0) fail(strerror(errno));
    if (isTaken && old.st_dev == original.st_dev && old.st_ino == original.st_ino) fail("it is the file itself");
    if (isTaken && !S_ISREG(old.st_mode)) fail("there is something of that name that is no regular file");
    if (isTaken && !mOverwrites) fail("there is a file of that name; --force overwrites it");
    const std::string extension(extensionOf(mPath));
    mTemporary = mPath + ".XXXXXX" + extension;
    mFd = mkostemps(mTemporary.data(), int(extension.size()), O_CLOEXEC);
    if (mFd < 0) fail(strerror(errno));
    // Where a file system knows no permissions there are none to be set.
    if (fchmod(mFd, original.st_mode & 0666) != 0) return;
}

NewFile::~NewFile() {
    if (mFd < 0) return;
    close(mFd);
    unlink(mTemporary.c_str());
}

void NewFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(mFd, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) fail(strerror(errno));
        if (written > 0) bytes.remove_prefix(size_t(written));
    }
}

void NewFile::put() {
    if (fsync(mFd) != 0 && errno != EINVAL && errno != EROFS) fail(strerror(errno));
    const unsigned flags = mOverwrites ? 0 : RENAME_NOREPLACE;
    int result = renameat2(AT_FDCWD, mTemporary.c_str(), AT_FDCWD, mPath.c_str(), flags);
    // Some file systems cannot do without replacing; that nothing was there has been seen.
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) result = rename(mTemporary.c_str(), mPath.c_str());
    if (result != 0) fail(errno == EEXIST ? "there is a file of that name; --force overwrites it" : strerror(errno));
    close(mFd);
    mFd = -1;
}

void NewFile::fail(const char* reason) const { throw FileError("cannot write " + mPath + ": " + reason); }

}  // namespace vxsub
