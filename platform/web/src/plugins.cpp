// A page loads no plug-ins.
#include <dlfcn.h>

extern "C" {

void* dlopen(const char*, int) { return nullptr; }
void* dlsym(void*, const char*) { return nullptr; }
int dlclose(void*) { return 0; }
}
