// How often a database brings its log into its file by itself. A program that contains checkpoints.cc must export its
// symbols.
#pragma once

namespace crash {

// For the connections opened from now on: after a change that leaves so many pages in the log; 0: as usual, about a
// thousand. A program begins with the number in ZX_LOG_PAGES.
void setLogPages(int pages);

}  // namespace crash
