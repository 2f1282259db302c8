/// All that may stand on a command line, with its words for --help. The manual page and the shells' completions are
/// made from it, too.
#pragma once

#include "Commands.h"

namespace vxsub {

void describe(CLI::App& app, Session& session);

}  // namespace vxsub
