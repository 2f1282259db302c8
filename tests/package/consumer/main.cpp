// Opens a subtitle file given on the command line and prints its first text; derives from the base as a plug-in does.
#include <stdio.h>

#include "subtitle/SubtitleParserSRT.h"

namespace {

struct PlugIn : android::SubtitleParser {
    android::U32 GetTagNum() override { return 7; }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    PlugIn plugIn;
    if (static_cast<android::SubtitleParser&>(plugIn).GetTagNum() != 7) return 1;
    android::SubtitleParserSRT parser(argv[1]);
    if (parser.BeginParse() != android::TRUE) return 1;
    android::U8 text[64] = {};
    parser.GetData(0, text, sizeof text, 0);
    puts(reinterpret_cast<const char*>(text));
    return 0;
}
