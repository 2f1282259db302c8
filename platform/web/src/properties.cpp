// A store of properties of this page's own.
#include <android-base/properties.h>

#include <map>

namespace android::base {

namespace {

std::map<std::string, std::string>& properties() {
    static std::map<std::string, std::string> all;
    return all;
}

}  // namespace

std::string GetProperty(const std::string& key, const std::string& default_value) {
    const auto found = properties().find(key);
    return found == properties().end() || found->second.empty() ? default_value : found->second;
}

bool SetProperty(const std::string& key, const std::string& value) {
    properties()[key] = value;
    return true;
}

}  // namespace android::base
