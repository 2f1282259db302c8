/// What a browser's platform log does besides.
#pragma once

#include <android/log.h>
#include <stddef.h>

namespace web {

/// Gives the next `most` messages to `logger`, of whatever priority, and counts the others without putting them
/// together; a null `logger` ends that. Until then the log says that nothing is loggable, so that whoever has thousands
/// of messages does not put them together, either.
void takeFirst(size_t most, __android_logger_function logger);

/// How many messages were only counted since `takeFirst`.
size_t messagesCounted();

}  // namespace web
