/// Tells the page how far a call is.
#pragma once

namespace page {

/// `word` as in the page's `Progress`; `done` is the part of the stage that is done, from 0 to 1.
void tellStage(const char* word, double done = 0);

}  // namespace page
