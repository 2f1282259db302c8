#include "Stage.h"

void vxsub::enter(Stage) {}
