/// What a call answers: JSON, and beside it arrays that lie in the module's memory until the next call.
#pragma once

#include <stdint.h>

#include <list>
#include <nlohmann/json.hpp>
#include <vector>

namespace page {

using Json = nlohmann::ordered_json;

class Arrays {
public:
    void clear() { mKept.clear(); }

    /// Keeps the values; {"array": "u32", "at": address, "count"} stands for them.
    template <typename Value>
    Json put(const std::vector<Value>& values) {
        const auto* const bytes = reinterpret_cast<const uint8_t*>(values.data());
        mKept.emplace_back(bytes, bytes + values.size() * sizeof(Value));
        return {{"array", "u" + std::to_string(sizeof(Value) * 8)},
                {"at", reinterpret_cast<uintptr_t>(mKept.back().data())},
                {"count", values.size()}};
    }

private:
    std::list<std::vector<uint8_t>> mKept;
};

}  // namespace page
