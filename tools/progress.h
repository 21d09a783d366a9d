#pragma once

#include "include/tarnwick.h"

namespace tarnwick::tool {

// Watches a solve for as long as it lives: keeps a line on the terminal current, and turns an
// interrupt into a stop, so that the best point so far is reported. A second interrupt ends the tool.
// One at a time may live.
class Watch {
  public:
    Watch(Problem* lp, bool shows_progress);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
};

}  // namespace tarnwick::tool
