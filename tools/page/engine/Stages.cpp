#include "Stages.h"

#include <emscripten.h>

#include "tools/vxsub/Stage.h"

// clang-format off
EM_JS(void, vxTellStage, (const char* word, double done), { Module.tellStage(UTF8ToString(word), done); })
// clang-format on

void page::tellStage(const char* word, double done) { vxTellStage(word, done); }

/// In place of the program's, which has nobody to tell.
void vxsub::enter(Stage stage) {
    constexpr const char* kWords[] = {"scanning", "texts", "meaning", "comparing", "writing"};
    page::tellStage(kWords[static_cast<int>(stage)]);
}
