/// The calls of the page's worker.
#pragma once

#include <string>

namespace page {

/// `request` is a JSON object whose "do" names the call; so is the answer, which has "error" when it failed.
std::string call(const char* request);

}  // namespace page
