#include "Time.h"

#include <stdio.h>

#include <limits>

namespace vxsub {
namespace {

using android::U32;
using android::U64;

constexpr U64 kLatest = std::numeric_limits<U32>::max();

/// Cuts what a time is made of off the front of its text; a failed cut leaves the text as it was.
class TimeCursor {
public:
    explicit TimeCursor(std::string_view text) : mText(text) {}

    bool atEnd() const { return mText.empty(); }

    bool eat(std::string_view word) {
        if (mText.substr(0, word.size()) != word) return false;
        mText.remove_prefix(word.size());
        return true;
    }

    /// A number of at least one digit; what is beyond every play time stays just beyond.
    bool eatNumber(U64* value) {
        if (!atDigit()) return false;
        for (*value = 0; atDigit(); mText.remove_prefix(1)) {
            *value = *value * 10 + digit();
            if (*value > kLatest) *value = kLatest + 1;
        }
        return true;
    }

    /// "." or "," and digits, as milliseconds; without either 0 milliseconds.
    bool eatFraction(U64* ms) {
        *ms = 0;
        if (!eat(".") && !eat(",")) return true;
        if (!atDigit()) return false;
        for (U64 unit = 100; atDigit(); unit /= 10, mText.remove_prefix(1)) *ms += unit * digit();
        return true;
    }

private:
    bool atDigit() const { return !mText.empty() && mText[0] >= '0' && mText[0] <= '9'; }
    U64 digit() const { return U64(mText[0] - '0'); }

    std::string_view mText;
};

std::optional<U32> fitting(U64 ms) {
    if (ms > kLatest) return std::nullopt;
    return U32(ms);
}

}  // namespace

std::optional<U32> parseTime(std::string_view text) {
    TimeCursor in(text);
    U64 value = 0, fraction = 0;
    if (!in.eatNumber(&value)) return std::nullopt;
    if (in.atEnd() || (in.eat("ms") && in.atEnd())) return fitting(value);

    int fields = 1;
    for (; in.eat(":"); ++fields) {
        U64 field = 0;
        if (fields == 3 || !in.eatNumber(&field) || field > 59) return std::nullopt;
        value = value * 60 + field;
    }
    if (!in.eatFraction(&fraction)) return std::nullopt;
    const bool complete = fields > 1 ? in.atEnd() : in.eat("s") && in.atEnd();
    if (!complete) return std::nullopt;
    return fitting(value * 1000 + fraction);
}

std::string formatTime(U32 ms) {
    char text[32];
    snprintf(text, sizeof text, "%02u:%02u:%02u,%03u", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60, ms % 1000);
    return text;
}

std::optional<U32> parseFrameRate(const std::string& text) {
    const size_t point = text.find('.');
    std::string fraction = point == text.npos ? "" : text.substr(point + 1);
    const std::string whole = text.substr(0, point);
    const auto isNumber = [](const std::string& digits, size_t most) {
        return !digits.empty() && digits.size() <= most && digits.find_first_not_of("0123456789") == digits.npos;
    };
    if (!isNumber(whole, 3) || (point != text.npos && !isNumber(fraction, 3))) return std::nullopt;
    fraction.resize(3, '0');
    const U32 thousandths = U32(std::stoul(whole) * 1000 + std::stoul(fraction));
    if (thousandths < 1000) return std::nullopt;
    return thousandths % 1000 == 0 && thousandths < 100000 ? thousandths / 1000 : thousandths;
}

}  // namespace vxsub
