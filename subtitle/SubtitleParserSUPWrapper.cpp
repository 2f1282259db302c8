#include "subtitle/SubtitleParserSUPWrapper.h"

#include <dlfcn.h>

#include "subtitle/system/Log.h"

namespace android {

namespace {

constexpr const char* kTag = "SubtitleParserSUPWrapper";
constexpr const char* kPlugin = "/system/lib/libvxsubtitlesup.so";
constexpr const char* kEntryPoint = "_ZN7android11GetInstanceEPc";
constexpr U32 kNothing = 0x80000000;

/// The plug-in library; null when it cannot be opened.
void* openPlugin() {
    void* const plugin = dlopen(kPlugin, RTLD_NOW);  // the flag value 0 on 32-bit devices
    if (plugin == nullptr) VX_LOG(kTag, "SubtitleParserSUPWrapper can not open the libvxsubtitlesup.so");
    return plugin;
}

/// Calls the plug-in's entry point with the constructor's own arguments, as the platform passes them to a function
/// declared with their types.
template <class... Args>
SubtitleParserSUP* getInstance(void* plugin, Args... args) {
    if (plugin == nullptr) return nullptr;
    void* const entryPoint = dlsym(plugin, kEntryPoint);
    if (entryPoint == nullptr) return nullptr;                 // not a word in the log, and the library stays loaded
    VX_LOG(kTag, "SubtitleParserSUPWrapper  GetInstance ok");  // the two blanks
    return reinterpret_cast<SubtitleParserSUP* (*)(Args...)>(entryPoint)(args...);
}

/// The plug-in's object through the places of the common virtual table.
SubtitleParser& parser(SubtitleParserSUP* impl) { return *reinterpret_cast<SubtitleParser*>(impl); }

}  // namespace

SubtitleParserSUPWrapper::SubtitleParserSUPWrapper(char* path) : mImpl(nullptr), mSupHandle(openPlugin()) {
    mImpl = getInstance(mSupHandle, path);
}

SubtitleParserSUPWrapper::SubtitleParserSUPWrapper(int fd, S64 offset, S64 length)
    : mImpl(nullptr), mSupHandle(openPlugin()) {
    // kept(sup-entry-point): the entry point is declared to take a path; plug-ins expect the three numbers there
    mImpl = getInstance(mSupHandle, fd, offset, length);
}

SubtitleParserSUPWrapper::~SubtitleParserSUPWrapper() {
    VX_LOG(kTag, "SubtitleParserSUPWrapper::~SubtitleParserSUPWrapper");
    if (mSupHandle != nullptr) dlclose(mSupHandle);
    mImpl = nullptr;  // kept(sup-object): never destroyed here, the plug-in owns it
}

U32 SubtitleParserSUPWrapper::GetData(const U32 track, U8* buf, const U32 size, const U32 tag, stSubDecoderInfo* info) {
    return mImpl != nullptr ? parser(mImpl).GetData(track, buf, size, tag, info) : kNothing;
}

BOOL SubtitleParserSUPWrapper::BeginParse() {
    if (mImpl == nullptr) return FALSE;
    VX_LOG(kTag, "SubtitleParserSUPWrapper::BeginParse");
    return parser(mImpl).BeginParse();
}

BOOL SubtitleParserSUPWrapper::BeginParse(int) { return SubtitleParserSUPWrapper::BeginParse(); }

U32 SubtitleParserSUPWrapper::GetTag(const U32 track, const U32 timeMs) {
    return mImpl != nullptr ? parser(mImpl).GetTag(track, timeMs) : kNothing;
}

BOOL SubtitleParserSUPWrapper::GetTagInfo(U32 track, U32 tag, ST_MEDIA_SUBTITLE_PARSER_TAG* info) {
    return mImpl != nullptr ? parser(mImpl).GetTagInfo(track, tag, info) : FALSE;
}

BOOL SubtitleParserSUPWrapper::GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return mImpl != nullptr ? parser(mImpl).GetTrackInfo(track, info) : FALSE;
}

U32 SubtitleParserSUPWrapper::GetTagNum() {
    if (mImpl == nullptr) return 0;
    VX_LOG(kTag, "SubtitleParserSUPWrapper::GetTagNum");
    return parser(mImpl).GetTagNum();
}

BOOL SubtitleParserSUPWrapper::Refresh() {
    if (mImpl == nullptr) return FALSE;
    VX_LOG(kTag, "SubtitleParserSUPWrapper::Refresh");
    return parser(mImpl).Refresh();
}

void SubtitleParserSUPWrapper::SetIGraphicBufferProducer(const sp<IGraphicBufferProducer>& producer) {
    if (mImpl == nullptr) return;
    parser(mImpl).SetIGraphicBufferProducer(producer);
    VX_LOG(kTag, "SubtitleParserSUPWrapper::SetIGraphicBufferProducer");  // the only line behind its call
}

void* SubtitleParserSUPWrapper::ParserTask(void*) { return nullptr; }

void SubtitleParserSUPWrapper::ParserThread() {}

}  // namespace android
