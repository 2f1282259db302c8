/// The pushed queue told a second time, in the plainest way: what tests and fuzzing compare the real one with.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "subtitle/SubtitleParserInternal.h"

namespace test {

class PushedQueueModel {
public:
    struct Entry {
        android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type;
        std::string text;
        android::U32 start, end;
    };

    void push(android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, android::U32 now, const std::string& text,
              android::U32 start, android::U32 end) {
        if (now > start || mLast > now) mEntries.clear();
        mLast = now;
        mCodeType = type;
        size_t place = 0;
        while (place < mEntries.size() && mEntries[place].start < start) ++place;
        mEntries.insert(mEntries.begin() + static_cast<std::ptrdiff_t>(place), {type, stored(text), start, end});
        while (!mEntries.empty() && mEntries.front().end < now) mEntries.erase(mEntries.begin());
    }

    void clear() { mEntries.clear(); }

    android::U32 tagAt(android::U32 time) const {
        for (const Entry& entry : mEntries) {
            if (entry.start <= time && time < entry.end) return entry.start;
        }
        return 0xFFFFFFFF;
    }

    const Entry* find(android::U32 tag) const {
        for (const Entry& entry : mEntries) {
            if (entry.start == tag) return &entry;
        }
        return nullptr;
    }

    /// What reading `tag` gives; the code type follows.
    std::string read(android::U32 tag, android::U32 size) {
        const Entry* const entry = find(tag);
        if (entry == nullptr) return "";
        mCodeType = entry->type;
        return entry->text.substr(0, size);
    }

    android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE codeType() const { return mCodeType; }
    const std::vector<Entry>& entries() const { return mEntries; }

    /// The text up to its first zero byte and without its brace blocks.
    static std::string stored(std::string text) {
        text = text.substr(0, text.find('\0'));
        for (size_t open = text.find('{'); open != std::string::npos; open = text.find('{', open)) {
            const size_t close = text.find('}', open);
            text.erase(open, close == std::string::npos ? close : close - open + 1);
        }
        return text;
    }

private:
    std::vector<Entry> mEntries;
    android::U32 mLast = 0;
    android::EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE mCodeType = android::E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN;
};

/// The text that an entry of the real queue holds.
inline std::string storedText(const android::ST_MEDIA_FILE_PLAYER_MOVIE_SUBTITLE_INFO& entry) {
    return {reinterpret_cast<const char*>(static_cast<uintptr_t>(entry.u32QueueStart)), entry.u32QueueSize};
}

inline bool sameEntries(const android::SubtitleParserInternal& parser, const PushedQueueModel& model) {
    return std::equal(
        parser.m_vSubtitleInfo.begin(), parser.m_vSubtitleInfo.end(), model.entries().begin(), model.entries().end(),
        [](const android::ST_MEDIA_FILE_PLAYER_MOVIE_SUBTITLE_INFO& real, const PushedQueueModel::Entry& entry) {
            return real.eType == entry.type && real.u32PTSStart == entry.start && real.u32PTSEnd == entry.end &&
                   storedText(real) == entry.text;
        });
}

}  // namespace test
