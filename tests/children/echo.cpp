// Writes its working folder, then its arguments, then its environment, one a line; the last line
// goes to standard error.
#include <cstdlib>
#include <string>

#include <unistd.h>

#include "ChildTools.h"

int main(int count, char** arguments) {
    char* folder = getcwd(nullptr, 0);
    children::print(std::string("folder ") + (folder ? folder : "?") + "\n");
    std::free(folder);
    for (int index = 1; index < count; ++index)
        children::print(std::string("argument ") + arguments[index] + "\n");
    for (char** variable = environ; *variable; ++variable)
        children::print(std::string("variable ") + *variable + "\n");
    const std::string last = "error stream\n";
    return write(STDERR_FILENO, last.data(), last.size()) > 0 ? 0 : 1;
}
