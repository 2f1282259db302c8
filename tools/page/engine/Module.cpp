// The way in for the page's worker: one call, JSON to and fro.
#include <emscripten.h>

#include "Calls.h"

extern "C" EMSCRIPTEN_KEEPALIVE const char* vx_call(const char* request) {
    static std::string answer;
    answer = page::call(request);
    return answer.c_str();
}
