// Leaves a process behind that keeps the output open, says "grandchild PID" and exits with 3. With
// the argument "chatter" the one left behind writes on as fast as it can.
#include <cstdlib>
#include <string>
#include <string_view>

#include <sys/types.h>
#include <unistd.h>

#include "ChildTools.h"

int main(int count, char** arguments) {
    const bool isChatty = count > 1 && std::string_view(arguments[1]) == "chatter";
    const pid_t grandchild = fork();
    if (grandchild < 0)
        std::exit(1);
    if (grandchild == 0) {
        alarm(children::lifetimeSeconds);
        while (isChatty)
            children::print("chatter\n");
        children::waitForEver();
    }
    children::print("grandchild " + std::to_string(grandchild) + "\n");
    return 3;
}
