/// Bionic's limits of system properties, which <cutils/properties.h> is written in terms of.
#pragma once

#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92
