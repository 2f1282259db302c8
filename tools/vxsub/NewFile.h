/// A file that comes into being whole or not at all.
#pragma once

#include <string>
#include <string_view>

namespace vxsub {

/// Written beside its place under another name with the same extension, and put there when it is ready.
class NewFile {
public:
    /// Throws `FileError` when `path` is taken and not `overwrites`, or is one of the file at `source`, whose
    /// permissions it gets.
    NewFile(std::string path, const std::string& source, bool overwrites);
    ~NewFile();  ///< takes it away again when `put` was not called
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Throws `FileError`.
    void write(std::string_view bytes);
    void put();

    const std::string& path() const { return mPath; }
    const std::string& pathUntilPut() const { return mTemporary; }

private:
    [[noreturn]] void fail(const char* reason) const;

    std::string mPath, mTemporary;
    bool mOverwrites;
    int mFd = -1;
};

}  // namespace vxsub
