#include "pictures.cpp"

#include <gtest/gtest.h>

#include "host/MemoryProducer.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

namespace {

/// Whether anything of a picture can be seen; of no picture, nothing.
bool isVisible(const host::Picture& picture) {
    for (size_t i = 3; i < picture.bytes.size(); i += 4)
        if (picture.bytes[i] != 0) return true;
    return false;
}

class PicturesSample : public testing::Test {
protected:
    PicturesSample() { mProducer->requireConnection(); }

    samples::VobSub mFilm = samples::demoVobSub();
    test::VobSubPair mPair{mFilm.idx(), mFilm.sub()};
    android::sp<host::MemoryProducer> mProducer = new host::MemoryProducer({1920, 1080, 0});
};

TEST_F(PicturesSample, DrawsEachPictureOnceAndHidesIt) {
    Pictures pictures(mPair.idx(), mProducer);
    ASSERT_EQ(2u, pictures.open());
    EXPECT_EQ(android::E_MEDIA_SUBTITLE_PARSER_LANGUAGE_ENGLISH, pictures.languageOf(0));
    EXPECT_EQ(android::E_MEDIA_SUBTITLE_PARSER_LANGUAGE_FRENCH, pictures.languageOf(1));

    const struct {
        android::U32 timeMs;
        size_t drawings;  ///< so far
        bool visible;
        const char* what;
    } rows[] = {
        {0, 0, false, "before the first"},
        {999, 0, false, "right before it"},
        {1000, 1, true, "the first"},
        {1000, 1, true, "a pause"},
        {3999, 1, true, "the first stays"},
        {4000, 2, true, "the second"},
        {999999, 3, true, "behind the last one's start: the last one"},
        {1500, 4, true, "a jump back"},
        {500, 5, false, "a jump to before the first"},
    };
    for (const auto& row : rows) {
        pictures.at(row.timeMs);
        EXPECT_EQ(row.drawings, mProducer->queued().size()) << row.what;
        EXPECT_EQ(row.visible, isVisible(mProducer->last())) << row.what;
    }
}

TEST_F(PicturesSample, ShowsTheTrackThatIsChosen) {
    Pictures pictures(mPair.idx(), mProducer);
    ASSERT_EQ(2u, pictures.open());
    pictures.at(4500);
    const auto english = mProducer->last().bytes;
    pictures.choose(1);
    EXPECT_FALSE(isVisible(mProducer->last()));
    pictures.at(500);
    EXPECT_FALSE(isVisible(mProducer->last())) << "before the second track's first picture nothing of the first one's";
    pictures.at(4500);
    EXPECT_TRUE(isVisible(mProducer->last()));
    EXPECT_NE(english, mProducer->last().bytes);
}

TEST_F(PicturesSample, LeavesAClearSurfaceThatNobodyIsConnectedTo) {
    {
        Pictures pictures(mPair.idx(), mProducer);
        ASSERT_EQ(2u, pictures.open());
        pictures.at(1000);
        EXPECT_TRUE(isVisible(mProducer->last()));
        EXPECT_EQ(NATIVE_WINDOW_API_CPU, mProducer->connected());
    }
    EXPECT_FALSE(isVisible(mProducer->last()));
    EXPECT_EQ(0, mProducer->connected());
}

TEST_F(PicturesSample, HidesWhatCannotBeRead) {
    const std::string cut = mFilm.sub().substr(0, 2048);
    test::VobSubPair pair(mFilm.idx(), cut);
    Pictures pictures(pair.idx(), mProducer);
    ASSERT_EQ(2u, pictures.open());
    pictures.at(1000);
    EXPECT_TRUE(isVisible(mProducer->last()));
    pictures.at(11000);
    EXPECT_FALSE(isVisible(mProducer->last()));
}

TEST_F(PicturesSample, HasNoTracksWithoutFiles) {
    Pictures pictures("/none/movie.idx", mProducer);
    EXPECT_EQ(0u, pictures.open());
    pictures.at(1000);
    EXPECT_FALSE(isVisible(mProducer->last()));
}

TEST(MemoryProducer, HasOneWhoIsConnected) {
    const android::sp<host::MemoryProducer> producer = new host::MemoryProducer({64, 36, 0});
    const android::sp<android::Surface> mine = new android::Surface(producer), other = new android::Surface(producer);
    ANativeWindowBuffer* buffer = nullptr;
    EXPECT_EQ(android::OK, mine->dequeueBuffer_DEPRECATED(mine.get(), &buffer)) << "not required";
    EXPECT_EQ(android::OK, mine->cancelBuffer_DEPRECATED(mine.get(), buffer));
    producer->requireConnection();
    EXPECT_EQ(android::NO_INIT, mine->dequeueBuffer_DEPRECATED(mine.get(), &buffer));
    EXPECT_EQ(android::OK, native_window_api_connect(mine.get(), NATIVE_WINDOW_API_CPU));
    EXPECT_EQ(android::BAD_VALUE, native_window_api_connect(other.get(), NATIVE_WINDOW_API_CPU));
    EXPECT_EQ(android::OK, other->dequeueBuffer_DEPRECATED(other.get(), &buffer)) << "the queue is connected";
    EXPECT_EQ(android::OK, other->cancelBuffer_DEPRECATED(other.get(), buffer));
    EXPECT_EQ(android::BAD_VALUE, native_window_api_disconnect(mine.get(), NATIVE_WINDOW_API_CPU + 1));
    EXPECT_EQ(android::OK, native_window_api_disconnect(mine.get(), NATIVE_WINDOW_API_CPU));
    EXPECT_EQ(0, producer->connected());
}

}  // namespace
