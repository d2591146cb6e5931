// Answers the everyday comparisons without cutting anything into segments.
#pragma once

namespace zxpol {

enum class QuickAnswer { no, yes, unknown };

// Whether `subject` matches `pattern`, both not null, as a ZxPolWildcardPattern cut at dots says. Knows patterns that
// are
// "*", plain text, or "*." and plain text; a plain text means the same when it is not cut. Whatever else there is about
// the two texts (stars elsewhere, blanks, 50 segments or more) makes the answer `unknown`.
QuickAnswer quickMatch(const char* pattern, const char* subject);

}  // namespace zxpol
