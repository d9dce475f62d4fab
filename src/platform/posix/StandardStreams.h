#pragma once

namespace valdorn {

// To be called first of all, before there is a second thread. Whoever starts a program may leave it
// without standard streams; the next files to be opened would take their numbers, and a message to
// standard error would end up in one of them. Missing streams become /dev/null.
void openMissingStandardStreams();

}  // namespace valdorn
