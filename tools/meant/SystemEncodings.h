/// A desktop's knowledge of encodings: uchardet guesses, iconv converts.
#pragma once

#include "tools/meant/Encodings.h"

namespace meant {

Encodings systemEncodings();

}  // namespace meant
