// Markup to plain text, rule by rule; what the formats choose of them stands in their own tests.
#include "tools/meant/Markup.h"

#include <gtest/gtest.h>

namespace meant {
namespace {

struct MarkupRow {
    std::string_view text, expected;
};

void expectTexts(const Markup& markup, const std::vector<MarkupRow>& rows) {
    for (const MarkupRow& row : rows) EXPECT_EQ(row.expected, plainText(row.text, markup)) << row.text;
}

TEST(MeantMarkup, LinesAreTrimmedBehindAndTheTextAtBothEnds) {
    expectTexts(
        {}, {{"", ""}, {"a", "a"}, {"\n\na \n b\t\n\nc\n \n", "a\n b\n\nc"}, {" \xC2\xA0\n", ""}, {"a\xC2\xA0", "a"}});
}

TEST(MeantMarkup, KnownTags) {
    expectTexts({}, {{"<i>a</i><I>b</I><b ><u/>c</b>", "abc"},
                     {"<font color=\"#fff\" size=2>a</font><span class=x>b</span>", "ab"},
                     {"<c.yellow>a</c>", "a"},
                     {"<v Bob>a <b class=x>b</ i>c< /b><a href=x>d</a><big>e</big>", "a bcde"},
                     {"<and> <large> <i am>", "<and> <large> <i am>"},
                     {"a < b > c <> <", "a < b > c <> <"},
                     {"<i", "<i"},
                     {"< i >a</ i ><i>b<\\i><i>c</i\nd</I", "abc\nd"},
                     {"a</it\n</i am\n</", "a</it\n</i am\n</"},
                     {"<font\ncolor=red>", "<font\ncolor=red>"},
                     {"<<i>a", "<a"},
                     {"a<br>b<BR/>c<br />d", "a\nb\nc\nd"}});
    Markup all;
    all.tags = Markup::Tags::All;
    expectTexts(all, {{"<and>a</large>", "a"},
                      {"<!DOCTYPE x>a<!-- <b> -->b", "ab"},
                      {"a<!-- b", "a"},
                      {"a <3 b> < c>", "a <3 b> < c>"},
                      {"<font\ncolor=red>a", "a"}});
}

TEST(MeantMarkup, Braces) {
    expectTexts({}, {{"{\\an8}a{\\ b}", "a"},
                     {"{y:i}{Y:b}{c:$ff}a{f:x}{s:1}{P:1}{o:1,2}", "a"},
                     {"{}a{x:1}{y}{ \\b}", "a{x:1}{y}{ \\b}"},
                     {"{\\an8", "{\\an8"},
                     {"{\\an8\n}", "{\\an8\n}"}});
    Markup styles;
    styles.styles = true;
    expectTexts(styles, {{"{i}a{/i}{B}b{/B}{x}{ib}", "ab{x}{ib}"}});
    expectTexts({}, {{"{i}a{/i}", "{i}a{/i}"}});
    Markup all;
    all.braces = Markup::Braces::All;
    expectTexts(all, {{"{x}a{ \\b}{y", "a{y"}});
}

TEST(MeantMarkup, Drawings) {
    Markup markup;
    markup.drawings = true;
    expectTexts(markup, {{"a{\\p1}b{\\p0}c", "ac"},
                         {"a{\\p1\\i1}b", "a"},
                         {"{\\pos(1,2)}a{\\pbo1}b", "ab"},
                         {"{\\p4}x{\\p0\\p2}y{\\p0}z", "z"}});
    expectTexts({}, {{"{\\p1}b", "b"}});
}

TEST(MeantMarkup, Breaks) {
    expectTexts({}, {{"a\\Nb\\nc\\hd|e[br]f\\", "a\nb\\nc\\hd|e\nf\\"}});
    Markup markup = markupWithBars();
    markup.backslashes = true;
    expectTexts(markup, {{"a\\Nb\\nc\\hd|e[br]f[BR]g\\x[b]", "a\nb\nc d\ne\nf\ng\\x[b]"}});
}

TEST(MeantMarkup, FlowingText) {
    Markup markup;
    markup.flows = true;
    markup.entities = true;
    expectTexts(markup, {{"\n a \t\n b<br>\n c ", "a b\nc"}, {"a&nbsp;b&#10;c&#9;", "a b c"}, {"<br>a", "a"}});
}

TEST(MeantMarkup, LongStraysTakeNoMoreThanLinearTime) {
    Markup markup;
    markup.tags = Markup::Tags::All;
    for (const char* stray : {"<", "<a", "{", "{\\", "&", "&#", "[", "|", "\\", "<!--", "</", "&nbs"}) {
        std::string text;
        while (text.size() < 400000) text += stray;
        for (const Markup& each : {Markup(), markup, markupWithBars()})
            EXPECT_LE(plainText(text, each).size(), text.size()) << stray;
    }
}

}  // namespace
}  // namespace meant
