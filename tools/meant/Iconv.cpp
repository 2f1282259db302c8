#include "tools/meant/Iconv.h"

#include <errno.h>
#include <iconv.h>

#include <memory>

namespace meant {
namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

class Converter {
public:
    explicit Converter(const std::string& name) : mHandle(iconv_open("UTF-8", name.c_str())) {}
    ~Converter() {
        if (isOpen()) iconv_close(mHandle);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool isOpen() const { return mHandle != reinterpret_cast<iconv_t>(-1); }

    void convert(std::string_view bytes, std::string* utf8) {
        char* in = const_cast<char*>(bytes.data());  // iconv leaves them as they are
        size_t left = bytes.size();
        while (left > 0) {
            const int error = run(&in, &left, utf8);
            if (error == 0 || error == E2BIG) continue;
            *utf8 += kReplacement;
            if (error == EINVAL || left == 0) break;  // half a character at the end
            ++in;
            --left;
        }
        run(nullptr, nullptr, utf8);  // what was kept because the next character might have joined it
    }

private:
    /// One call; null: no more input.
    int run(char** in, size_t* left, std::string* utf8) {
        char buffer[1024];
        char* out = buffer;
        size_t room = sizeof buffer;
        const size_t result = iconv(mHandle, in, left, &out, &room);
        const int error = result == static_cast<size_t>(-1) ? errno : 0;
        utf8->append(buffer, static_cast<size_t>(out - buffer));
        return error;
    }

    iconv_t mHandle;
};

}  // namespace

Encodings::Decode openIconv(const std::string& name) {
    const auto converter = std::make_shared<Converter>(name);
    if (!converter->isOpen()) return nullptr;
    return [converter](std::string_view bytes, std::string* utf8) { converter->convert(bytes, utf8); };
}

}  // namespace meant
