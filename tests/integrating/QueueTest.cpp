#include "queue.cpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

TEST(QueueSample, AnswersWhatIsShown) {
    MovieTexts texts;
    EXPECT_TRUE(texts.push("{\\an8}Hello", 1000, 2000, 0));
    EXPECT_TRUE(texts.push("Bye", 3000, 4000, 0));
    const struct {
        android::U32 timeMs;
        const char* text;
    } rows[] = {{999, ""}, {1000, "Hello"}, {1999, "Hello"}, {2000, ""}, {3999, "Bye"}, {4000, ""}};
    for (const auto& row : rows) EXPECT_EQ(row.text, texts.at(row.timeMs)) << row.timeMs;
}

TEST(QueueSample, IsEmptyAfterAJump) {
    MovieTexts texts;
    EXPECT_TRUE(texts.push("Hello", 1000, 2000, 0));
    texts.jumped();
    EXPECT_EQ("", texts.at(1500));
}

TEST(QueueSample, CopiesTextsFromAnyAddress) {
    MovieTexts texts;
    {
        const std::string far(500, 'x');  // on a 64-bit machine above 4 GiB
        EXPECT_TRUE(texts.push(far, 1000, 2000, 0));
    }
    EXPECT_EQ(std::string(500, 'x'), texts.at(1000));
    EXPECT_TRUE(texts.push(std::string(2000, 'y'), 2000, 3000, 0));
    EXPECT_EQ(std::string(1024, 'y'), texts.at(2000)) << "no more than there is room for";
}

TEST(QueueSample, TakesTwoThreads) {
    constexpr android::U32 kTexts = 500;
    MovieTexts texts;
    std::atomic<bool> ended{false};
    std::thread demultiplexer([&] {
        for (android::U32 i = 0; i < kTexts; ++i) texts.push("text", i * 10, i * 10 + 10, 0);
        ended = true;
    });
    bool strange = false;
    while (!ended) {
        const std::string text = texts.at(5);
        strange = strange || (!text.empty() && text != "text");
    }
    demultiplexer.join();
    EXPECT_FALSE(strange);
    EXPECT_EQ("text", texts.at((kTexts - 1) * 10));
}

}  // namespace
