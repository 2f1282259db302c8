/// The program: a command line, and how each outcome ends it.
#pragma once

namespace vxsub {

/// Returns the exit status; complains on standard error.
int run(int argc, char** argv);

}  // namespace vxsub
