/// Usage bits of graphic buffers.
#pragma once

enum {
    GRALLOC_USAGE_SW_READ_MASK = 0x0000000FU,
    GRALLOC_USAGE_SW_WRITE_OFTEN = 0x00000030U,
    GRALLOC_USAGE_SW_WRITE_MASK = 0x000000F0U,
};
