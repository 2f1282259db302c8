#include "descriptors.cpp"

#include <gtest/gtest.h>

#include "tests/support/Interpose.h"
#include "tools/samples/VobSubMaker.h"

namespace {

constexpr const char* kTwo = "1\n00:00:01,000 --> 00:00:02,000\nHello\n\n2\n00:00:04,000 --> 00:00:05,000\nBye\n\n";

std::string textOf(android::SubtitleParser& parser, android::U32 entry) {
    android::U8 text[64] = {};
    parser.GetData(0, text, sizeof text, entry);
    return reinterpret_cast<char*>(text);
}

class Descriptors : public testing::Test {
protected:
    unsigned mBefore = test::openDescriptors();
    void TearDown() override { EXPECT_EQ(mBefore, test::openDescriptors()) << "descriptors that are left behind"; }
};

TEST_F(Descriptors, OfTextStayWithTheirOwner) {
    const test::TempFile file(kTwo);
    const auto parser = openSrt(file.fd());
    ASSERT_NE(nullptr, parser);
    EXPECT_EQ(2u, parser->GetTagNum());
    EXPECT_EQ("Bye", textOf(*parser, 1));
    EXPECT_NE(-1, fcntl(file.fd(), F_GETFD)) << "yours stays yours";
}

TEST_F(Descriptors, OfNoFileOpenNothing) { EXPECT_EQ(nullptr, openSrt(-1)); }

TEST_F(Descriptors, PartsOfAFileAreReadByPath) {
    const std::string content(kTwo);
    const test::TempFile file(content);
    const auto second = static_cast<android::S64>(content.find("2\n"));
    const auto parser = openSrtPart(file.path(), second, static_cast<android::S64>(content.size()) - second);
    ASSERT_NE(nullptr, parser);
    EXPECT_EQ(1u, parser->GetTagNum());
    EXPECT_EQ("Bye", textOf(*parser, 0));
}

TEST_F(Descriptors, OfTheDispatcherAreClosedByWhoDestroysIt) {
    const test::TempFile file("\xEF\xBB\xBF{25}{50}Hello\r\n{75}{100}Bye\r\n");
    SubFile sub(file.fd());
    sub.parser->SetFrameRate(25);
    ASSERT_EQ(android::TRUE, sub.parser->BeginParse());
    EXPECT_EQ("Bye", textOf(*sub.parser, 1));
}

TEST_F(Descriptors, OfVobSubAreHandedOverAsDuplicates) {
    const samples::VobSub film = samples::demoVobSub();
    const test::TempFile idx(film.idx()), sub(film.sub());
    const auto parser = openVobSub(idx.fd(), sub.fd());
    ASSERT_NE(nullptr, parser);
    EXPECT_EQ(8u, parser->GetTagNum());
    android::stSubDecoderInfo place = {};
    EXPECT_NE(0u, parser->GetData(0, nullptr, 0, 1, &place));
    EXPECT_NE(0, place.u16Width);
    EXPECT_NE(-1, fcntl(idx.fd(), F_GETFD));
    EXPECT_NE(-1, fcntl(sub.fd(), F_GETFD));
}

TEST_F(Descriptors, OfVobSubThatIsRefusedAreNotLeftOpen) {
    const test::TempFile idx("");
    EXPECT_EQ(nullptr, openVobSub(idx.fd(), -1));
}

}  // namespace
