/// The inspector's command line, within the page.
#pragma once

#include <string>
#include <vector>

namespace page {

/// No property is set and no log is shown, as when a program begins.
void forgetSettings();

/// Returns the exit status; what is written lies in /out, and complaints lie in /errors.
int runProgram(std::vector<std::string> words);

}  // namespace page
