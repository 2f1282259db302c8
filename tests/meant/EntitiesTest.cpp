#include "tools/meant/Entities.h"

#include <gtest/gtest.h>

namespace meant {
namespace {

TEST(MeantEntities, WithTheirSize) {
    const struct {
        std::string_view text;
        char32_t character;
        std::string_view rest;
    } kRows[] = {
        {"&amp;x", U'&', "x"},
        {"&nbsp;", 0xA0, ""},
        {"&yuml;x", 0xFF, "x"},
        {"&eacute;", 0xE9, ""},
        {"&Eacute;", 0xC9, ""},
        {"&hellip;", 0x2026, ""},
        {"&frac12;", 0xBD, ""},
        {"&trade;", 0x2122, ""},
        {"&#39;x", U'\'', "x"},
        {"&#039x", U'\'', "x"},
        {"&#x27;", U'\'', ""},
        {"&#X1F600;", 0x1F600, ""},
        {"&nbsp x", 0xA0, " x"},
        {"&ampx", U'&', "x"},
        {"&quot", U'"', ""},
        {"&eacute x", 0, "&eacute x"},
        {"&no;", 0, "&no;"},
        {"&", 0, "&"},
        {"&;", 0, "&;"},
        {"&#;", 0, "&#;"},
        {"&#x;", 0, "&#x;"},
        {"&#1114112;", 0, "&#1114112;"},
        {"&#x110000;", 0, "&#x110000;"},
        {"&#99999999999999999999;", 0, "&#99999999999999999999;"},
        {"&#xFFFFFFFFFFFFFFFF;", 0, "&#xFFFFFFFFFFFFFFFF;"},
        {"x&amp;", 0, "x&amp;"},
    };
    for (const auto& row : kRows) {
        std::string_view text = row.text;
        EXPECT_EQ(row.character, takeEntity(&text)) << row.text;
        EXPECT_EQ(row.rest, text) << row.text;
    }
}

}  // namespace
}  // namespace meant
