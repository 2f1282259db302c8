// The pushed queue: the input is played as a sequence of operations, and every answer is compared with the plain
// model's. One line of hex shows the way: op, then its arguments, as many bytes as each needs.
//
//   0x00..0x7F  push: encoding (low 4 bits of op), now -8..+247 ms, start, duration, size, then the text
//   0x80..0x9F  push with 32-bit times, as above
//   0xA0..0xBF  GetTag at now + n
//   0xC0..0xDF  GetData of the n-th entry (or of tag n, when there is none), into a buffer of so many bytes
//   0xE0..0xFB  GetTagInfo of the same
//   0xFC..0xFD  GetTrackInfo
//   0xFE        a push that finds no memory
//   0xFF        ClearSubtitleData
#include <string.h>

#include <string>
#include <vector>

#include "fuzz/Drivers.h"
#include "subtitle/SubtitleParserInternal.h"
#include "tests/support/PushedQueueModel.h"

namespace {

using namespace android;

#define CHECK(condition) fuzz::require(condition, #condition)

/// Gives the input away byte by byte, zeros when it is used up.
class Bytes {
public:
    explicit Bytes(fuzz::Input in) : mData(in.data), mLeft(in.size) {}
    bool empty() const { return mLeft == 0; }
    U32 byte() {
        if (mLeft == 0) return 0;
        --mLeft;
        return *mData++;
    }
    U32 word() {
        const U32 high = byte() << 24 | byte() << 16;
        return high | byte() << 8 | byte();
    }
    std::string text(size_t size) {
        size = size < mLeft ? size : mLeft;
        std::string text(reinterpret_cast<const char*>(mData), size);
        mData += size;
        mLeft -= size;
        return text;
    }

private:
    const U8* mData;
    size_t mLeft;
};

/// The queue and its model, fed and asked alike.
class Player {
public:
    void push(U32 op, U32 now, U32 start, U32 end, const std::string& text) {
        const auto type = static_cast<EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE>(op & 15);
        const std::vector<char> exact(text.begin(), text.end());  // a byte read too far is seen
        mNow = now;
        CHECK(mQueue.AddSubtitleText(type, now, exact.data(), static_cast<U32>(exact.size()), start, end) == TRUE);
        mModel.push(type, now, text, start, end);
        CHECK(mQueue.m_vSubtitleInfo.size() == mModel.entries().size());
    }

    void pushTooMuch() {
        CHECK(mQueue.AddSubtitleText(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5, mNow, "", 0xFFFFFFFF, mNow, mNow) ==
              FALSE);
    }

    void clear() {
        CHECK(mQueue.ClearSubtitleData() == TRUE);
        mModel.clear();
    }

    void getTag(U32 time) { CHECK(mQueue.GetTag(time, time) == mModel.tagAt(time)); }

    void getData(U32 n, U32 size) {
        const U32 tag = tagOf(n);
        std::vector<U8> buffer(size, 0xAA);
        const std::string expected = mModel.read(tag, size);
        CHECK(mQueue.GetData(0, buffer.data(), size, tag) == expected.size());
        CHECK(expected.empty() || memcmp(buffer.data(), expected.data(), expected.size()) == 0);
        for (size_t i = expected.size(); i < size; ++i) CHECK(buffer[i] == 0xAA);
        getTrackInfo();
    }

    void getTagInfo(U32 n) {
        const U32 tag = tagOf(n);
        const auto* const entry = mModel.find(tag);
        ST_MEDIA_SUBTITLE_PARSER_TAG info = {1, 2, 3, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_PART};
        CHECK(mQueue.GetTagInfo(0, tag, &info) == (entry != nullptr ? TRUE : FALSE));
        CHECK(info.u32TimeStart == (entry != nullptr ? entry->start : 1));
        CHECK(info.u32TimeEnd == (entry != nullptr ? entry->end : 2));
        CHECK(info.s64Pos == 3 && info.eDataType == E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_PART);
    }

    void getTrackInfo() {
        ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
        CHECK(mQueue.GetTrackInfo(0, &info) == TRUE);
        CHECK(info.eSubtitleType == E_MEDIA_SUBTITLE_PARSER_TYPE_INTERNAL);
        CHECK(info.eCodeType == mModel.codeType());
    }

    void compareAll() const { CHECK(test::sameEntries(mQueue, mModel)); }

    U32 now() const { return mNow; }

private:
    U32 tagOf(U32 n) const { return n < mModel.entries().size() ? mModel.entries()[n].start : n; }

    SubtitleParserInternal mQueue;
    test::PushedQueueModel mModel;
    U32 mNow = 0;
};

void operations(fuzz::Input input) {
    Bytes in(input);
    Player player;
    while (!in.empty()) {
        const U32 op = in.byte();
        if (op < 0x80) {
            const U32 now = player.now() + in.byte() - 8;
            const U32 start = now + in.byte() - 8;
            const U32 end = start + in.byte();
            player.push(op, now, start, end, in.text(in.byte()));
        } else if (op < 0xA0) {
            const U32 now = in.word();
            const U32 start = in.word();
            const U32 end = in.word();
            player.push(op, now, start, end, in.text(in.byte()));
        } else if (op < 0xC0) {
            player.getTag(player.now() + in.byte() - 8);
        } else if (op < 0xE0) {
            const U32 n = in.byte();
            player.getData(n, in.byte());
        } else if (op < 0xFC) {
            player.getTagInfo(in.byte());
        } else if (op < 0xFE) {
            player.getTrackInfo();
        } else if (op == 0xFE) {
            player.pushTooMuch();
        } else {
            player.clear();
        }
    }
    player.compareAll();
}

}  // namespace

const std::vector<fuzz::Driver> fuzz::drivers = {{"operations", operations}};
