// SAMI as meant: elements in any spelling, text as HTML shows it, each language for itself.
#include "tests/meant/Listing.h"

namespace meant {
namespace {

TEST(MeantSami, Elements) {
    const std::string end = "<SYNC Start=4000><P>&nbsp;\n";
    expectReadings(
        "smi", Format::Sami,
        {
            {"as usual", "<SAMI>\n<BODY>\n<SYNC Start=1000><P Class=ENCC>Hi\n" + end + "</BODY>\n</SAMI>\n",
             "1000-4000 Hi"},
            {"quotes and small letters", "<sync start=\"1000\"><p class='ENCC'>Hi</p></sync>\n" + end, "1000-4000 Hi"},
            {"blanks", "  <SYNC  Start = 1000 >\n <P  Class = ENCC >Hi\n" + end, "1000-4000 Hi"},
            {"broken over lines", "<SYNC Start\n=  1000 ><P Class=ENCC>Hi\n" + end, "1000-4000 Hi"},
            {"a unit", "<SYNC Start=1000ms><P>Hi\n" + end, "1000-4000 Hi"},
            {"not at the line's beginning", "<BODY><SYNC Start=1000><P>Hi<SYNC Start=4000><P>&nbsp;\n", "1000-4000 Hi"},
            {"no paragraphs", "<SYNC Start=1000>Hi\n<SYNC Start=4000>\n", "1000-4000 Hi"},
            {"negative", "<SYNC Start=-200><P>Hi\n" + end, "-200-4000 Hi"},
            {"an end of its own", "<SYNC Start=1000 End=2500><P>Hi\n" + end, "1000-2500 Hi"},
            {"the next ends it", "<SYNC Start=1000><P>a\n<SYNC Start=2000><P>b\n" + end, "1000-2000n a; 2000-4000 b"},
            {"nothing ends it", "<SYNC Start=1000><P>a\n</BODY>none", "1000- a"},
            {"out of order", "<SYNC Start=5000><P>b\n<SYNC Start=1000><P>a\n" + end, "5000- b; 1000-4000 a"},
            {"two at once", "<SYNC Start=1000><P>a\n<SYNC Start=1000><P>b\n" + end, "1000-4000 a; 1000-4000 b"},
            {"a comment", "<!--\n<SYNC Start=1><P>no\n-->\n<SYNC Start=1000><P>a\n" + end, "1000-4000 a"},
            {"a comment without an end", "<!-- x\n<SYNC Start=1000><P>a\n" + end, "1000-4000 a"},
            {"two paragraphs", "<SYNC Start=1000><P Class=A ID=Source>Ann<P Class=A>Hi\n" + end, "1000-4000 Ann/Hi"},
        });
    const File file = readAs("smi", "<SYNC Start=1000><P>a\n<SYNC Begin=2000><P>b\n<SYNC Start=3000><P>c\n");
    EXPECT_EQ("1000-3000n a; 3000- c", listed(file));
    ASSERT_EQ(1u, file.strayLines.size());
    EXPECT_EQ(2u, file.strayLines[0].line);
}

TEST(MeantSami, Languages) {
    expectReadings("smi", Format::Sami,
                   {
                       {"in one element",
                        "<SYNC Start=1000><P Class=EN>Hi<P Class=FR>Salut\n<SYNC Start=2000><P Class=FR>&nbsp;\n"
                        "<SYNC Start=3000><P Class=EN>&nbsp;\n",
                        "1000-3000 [EN] Hi; 1000-2000 [FR] Salut"},
                       {"one behind the other",
                        "<SYNC Start=1000><P Class=EN>Hi\n<SYNC Start=2000><P Class=EN>&nbsp;\n"
                        "<SYNC Start=1000><P Class=FR>Salut\n<SYNC Start=3000><P Class=FR>&nbsp;\n",
                        "1000-2000 [EN] Hi; 1000-3000 [FR] Salut"},
                       {"letters of either case are one class",
                        "<SYNC Start=1000><P Class=EN>a\n<SYNC Start=2000><P Class=en>b\n", "1000-2000n a; 2000- b"},
                       {"without a class in a file of one",
                        "<SYNC Start=1000><P Class=EN>a\n<SYNC Start=2000><P>&nbsp;\n", "1000-2000 a"},
                       {"an empty one without a class ends all",
                        "<SYNC Start=1000><P Class=EN>a<P Class=FR>b\n<SYNC Start=2000><P>&nbsp;\n",
                        "1000-2000 [EN] a; 1000-2000 [FR] b"},
                   });
    const File file = readAs("smi", "<SYNC Start=1><P Class=EN>a<P Class=FR>b\n<SYNC Start=2><P Class=en>c\n");
    ASSERT_EQ(2u, file.languages.size());
    EXPECT_EQ("EN", file.languages[0].name);
    EXPECT_EQ(2u, file.languages[0].entries);
    EXPECT_EQ("FR", file.languages[1].name);
    EXPECT_EQ(1u, file.languages[1].entries);
}

TEST(MeantSami, Texts) {
    const auto text = [](const char* written) { return "<SYNC Start=1000><P>" + std::string(written) + "\n"; };
    expectReadings("smi", Format::Sami,
                   {
                       {"breaks", text("a<br>b<BR>c<br/>d<br />\ne"), "1000- a/b/c/d/e"},
                       {"a line end is a blank", text("\n  a\n  b  c\n"), "1000- a b c"},
                       {"elements", text("<font color=red>a</font> <b>b</b><whatever>c"), "1000- a bc"},
                       {"a comment", text("a<!-- <br> -->b"), "1000- ab"},
                       {"brackets that are none", text("a < b, I <3 you"), "1000- a < b, I <3 you"},
                       {"a bracket that does not close", text("a <b<br>c"), "1000- a <b/c"},
                       {"entities", text("a&nbsp;b &amp; &quot;c&quot; &#39;d&#039; &eacute;&hellip;"),
                        "1000- a b & \"c\" 'd' \xC3\xA9\xE2\x80\xA6"},
                       {"without a semicolon", text("a&nbsp b &amp c"), "1000- a b & c"},
                   });
}

}  // namespace
}  // namespace meant
