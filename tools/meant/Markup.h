/// From the text of an entry, codes and all, to what is meant to be read.
#pragma once

#include <string>
#include <string_view>

namespace meant {

/// What counts as markup in a format.
struct Markup {
    enum class Tags { Known, All };
    enum class Braces {
        Codes,  ///< {\an8} and {y:i}: what begins with a backslash, or as a MicroDVD code
        All,
    };

    Tags tags = Tags::Known;  ///< <i>, <font ...>, or every element
    Braces braces = Braces::Codes;
    bool styles = false;       ///< {i} and {/b}
    bool entities = false;     ///< &amp; and the like
    bool backslashes = false;  ///< \n and \h besides \N
    bool bars = false;         ///< | breaks the line, as [br] does anywhere
    bool flows = false;        ///< a line end in the file is a blank, and blanks in a row are one
    bool drawings = false;     ///< what stands behind {\p1} is no text
};

/// The markup of formats whose entries have one line in the file, and bars where theirs end.
constexpr Markup markupWithBars() {
    Markup markup;
    markup.bars = true;
    return markup;
}

/// The text without markup, '\n' for every break of a line; lines without blanks at their ends, none empty at both ends
/// of the text.
std::string plainText(std::string_view text, const Markup& markup);

}  // namespace meant
