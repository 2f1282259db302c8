#include "LogLines.h"

#include "tools/vxsub/Log.h"
#include "web/Log.h"

namespace page {
namespace {

LogLines* taking = nullptr;

void take(const __android_logger_data* data, const char* message) { taking->add(vxsub::logLine(*data, message)); }

}  // namespace

LogTaker::LogTaker(LogLines& lines) {
    taking = &lines;
    web::takeFirst(lines.room(), take);
}

LogTaker::~LogTaker() {
    taking->addUnread(web::messagesCounted());
    web::takeFirst(0, nullptr);
}

}  // namespace page
