#pragma once

namespace valdorn {

// Any thread. Leaves a pipe to a process of its own that throws away what comes and ends with the
// last writer. A daemon that was asked to end goes on printing while it tells its server; with
// nobody at the other end of its output, the next line would end it by SIGPIPE half-way.
//
// `output` is borrowed, and no longer non-blocking afterwards. Failing is not reported: the child
// then ends at its next line.
void leaveToDrain(int output);

}  // namespace valdorn
