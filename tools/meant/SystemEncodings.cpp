#include "tools/meant/SystemEncodings.h"

#include <uchardet/uchardet.h>

#include <memory>

#include "tools/meant/Iconv.h"

namespace meant {
namespace {

std::string guess(std::string_view bytes) {
    struct Free {
        void operator()(uchardet_t detector) const { uchardet_delete(detector); }
    };
    const std::unique_ptr<uchardet, Free> detector(uchardet_new());
    if (uchardet_handle_data(detector.get(), bytes.data(), bytes.size()) != 0) return {};
    uchardet_data_end(detector.get());
    return uchardet_get_charset(detector.get());
}

}  // namespace

Encodings systemEncodings() { return {guess, openIconv}; }

}  // namespace meant
