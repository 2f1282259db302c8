// Opens a subtitle file given on the command line and prints its first text; derives from the base as a plug-in does;
// hands over a surface, and pushes a text.
#include "pictures.cpp"
#include "queue.cpp"

#include <stdio.h>

#include "host/MemoryProducer.h"
#include "subtitle/SubtitleParserSRT.h"

namespace {

struct PlugIn : android::SubtitleParser {
    android::U32 GetTagNum() override { return 7; }
};

bool draws() {
    const android::sp<host::MemoryProducer> producer = new host::MemoryProducer({64, 36, 0});
    android::SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    parser.SetIGraphicBufferProducer(producer);
    const bool cleared = parser.Refresh() == android::TRUE && producer->queued().size() == 1;
    Pictures pictures("/none/movie.idx", producer);
    return cleared && pictures.open() == 0 && producer->connected() == NATIVE_WINDOW_API_CPU;
}

bool keepsTexts() {
    MovieTexts texts;
    return texts.push("pushed", 1000, 2000, 0) && texts.at(1500) == "pushed";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    PlugIn plugIn;
    if (static_cast<android::SubtitleParser&>(plugIn).GetTagNum() != 7 || !draws() || !keepsTexts()) return 1;
    android::SubtitleParserSRT parser(argv[1]);
    if (parser.BeginParse() != android::TRUE) return 1;
    android::U8 text[64] = {};
    parser.GetData(0, text, sizeof text, 0);
    puts(reinterpret_cast<const char*>(text));
    return 0;
}
