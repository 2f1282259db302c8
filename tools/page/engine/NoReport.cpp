// The page is the report.
#include "tools/vxsub/Commands.h"

namespace vxsub {

void addReport(CLI::App&, Session&) {}

}  // namespace vxsub
