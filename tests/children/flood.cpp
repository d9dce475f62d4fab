// Writes as many bytes of the pattern as its argument says (for ever without one).
#include <string>

#include "ChildTools.h"

int main(int count, char** arguments) {
    alarm(children::lifetimeSeconds);
    if (count > 1) {
        children::print(children::pattern(std::stoul(arguments[1])));
        return 0;
    }
    const std::string text = children::pattern(std::size_t{64} * 1024);
    for (;;)
        children::print(text);
}
