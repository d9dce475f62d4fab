// Says "ready" and lives until a signal ends it.
#include "ChildTools.h"

int main() {
    children::print("ready\n");
    children::waitForEver();
}
