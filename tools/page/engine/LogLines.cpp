#include "LogLines.h"

#include <android/log.h>

#include "tools/vxsub/Log.h"
#include "web/Log.h"

namespace page {
namespace {

LogLines* taking = nullptr;

void setPriority() { __android_log_set_minimum_priority(taking->isFull() ? ANDROID_LOG_SILENT : ANDROID_LOG_VERBOSE); }

void take(const __android_logger_data* data, const char* message) {
    taking->add(vxsub::logLine(*data, message));
    if (taking->isFull()) setPriority();
}

}  // namespace

LogTaker::LogTaker(LogLines& lines) : mLines(lines), mPassedOver(web::messagesPassedOver()) {
    taking = &lines;
    __android_log_set_logger(take);
    setPriority();
}

LogTaker::~LogTaker() {
    __android_log_set_logger(nullptr);
    __android_log_set_minimum_priority(ANDROID_LOG_DEFAULT);
    mLines.addUnread(size_t(web::messagesPassedOver() - mPassedOver));
}

}  // namespace page
