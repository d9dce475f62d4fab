#pragma once

namespace valdorn {

// To be called first of all, before there is a second thread. Whoever starts a program may leave it
// with signals blocked, which then could not ask it to end: none is from now on. A write to what
// nobody reads any more fails like any other (EPIPE) and does not end the process: SIGPIPE is
// ignored, unless somebody handles it. Children begin with neither.
void takeUsualSignals();

}  // namespace valdorn
