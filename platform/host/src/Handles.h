/// Which memory producer a buffer handle belongs to: the way of the mapper to the pixels.
#pragma once

#include <cutils/native_handle.h>
#include <utils/StrongPointer.h>

#include "host/MemoryProducer.h"

namespace host {

void publish(buffer_handle_t handle, MemoryProducer* producer);
void withdraw(buffer_handle_t handle);

/// Null for a handle that is not out.
android::sp<MemoryProducer> producerOf(buffer_handle_t handle);

}  // namespace host
