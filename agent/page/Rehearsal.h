// A recorded slot that is lived once more, so that its page can tell what came of it.
#pragma once

#include <string>

#include "agent/page/Lane.h"
#include "agent/recording/Recording.h"
#include "agent/slots/Loop.h"
#include "agent/slots/Plugin.h"

namespace Agent {

/// Plays the transactions of `slot` to an identifier of `plugin`, and adds to `lane` each of them
/// with what the handler said of it, and the verdicts. Those that the recording has itself are
/// taken instead. Where the replay ends before the recording does, the rest is added as it was
/// recorded. `loop` goes from deadline to deadline. Throws a `Failure`, also when the loop is
/// stopped.
void rehearse(Recording const& recording, std::string const& slot, Plugin const& plugin, Loop& loop,
              Lane& lane);

}  // namespace Agent
