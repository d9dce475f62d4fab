// Writes more than a pipe holds, so that somebody has to be reading, and dies in the middle of a
// line without another word.
#include <csignal>

#include "ChildTools.h"

int main() {
    children::print(children::pattern(std::size_t{200} * 1024));
    children::print("\nhalf a li");
    raise(SIGKILL);
}
