// A library without the plug-in's entry point: the name is there, but not as a C++ function of a path.
extern "C" __attribute__((visibility("default"))) void* GetInstance(char*) { return nullptr; }
