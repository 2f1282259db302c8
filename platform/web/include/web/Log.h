/// What a browser's platform log tells besides.
#pragma once

namespace web {

/// How many messages nobody took so far: there was no logger, or their priority was too low for it.
unsigned long long messagesPassedOver();

}  // namespace web
