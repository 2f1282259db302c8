# A browser: Debian's emscripten. Its compiler needs NODE_PATH, which the preset sets.

include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
