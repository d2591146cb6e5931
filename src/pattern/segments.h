// Cutting a text into its segments.
#pragma once

namespace zxpol {

// Trims `src` into `buf`, cuts `buf` as ZxPolRfc2822Checker::getTokens does, lower-cases the first `capacity` tokens
// and stores them in `segs`. Returns the number stored: 0 when nothing is left after trimming. `buf` needs room for
// `src`.
unsigned int cutSegments(const char* src, char* buf, char** segs, unsigned int capacity, char quote, const char* seps);

// Copies `src` without the blanks, tabs and line feeds around it; `dst` may be `src`. Returns `dst`.
char* trimText(char* dst, const char* src);

}  // namespace zxpol
