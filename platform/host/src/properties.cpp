// property_get over libbase's in-process store. Set a property with android::base::SetProperty.
#include <android-base/properties.h>
#include <cutils/properties.h>
#include <string.h>

#include <algorithm>
#include <string>

extern "C" __attribute__((visibility("default"))) int property_get(const char* key, char* value,
                                                                   const char* default_value) {
    thread_local std::string name;  // names are longer than what a string holds without memory of its own
    name = key;
    const std::string found = android::base::GetProperty(name, default_value != nullptr ? default_value : "");
    const size_t length = std::min<size_t>(found.size(), PROPERTY_VALUE_MAX - 1);
    memcpy(value, found.data(), length);
    value[length] = '\0';
    return int(length);
}
