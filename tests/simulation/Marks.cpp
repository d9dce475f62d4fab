#include "simulation/Marks.h"

namespace valdorn::simulation {

namespace {

// Counters are made before main() begins, in any order: the list is made by the first.
std::vector<const MarkCounter*>& list() {
    static std::vector<const MarkCounter*> all;
    return all;
}

}  // namespace

MarkCounter::MarkCounter(const char* name) : name_(name) {
    list().push_back(this);
}

std::vector<const MarkCounter*> allMarks() {
    std::vector<const MarkCounter*> all = list();
    std::sort(all.begin(), all.end(), [](const MarkCounter* one, const MarkCounter* other) {
        return one->name() < other->name();
    });
    return all;
}

std::vector<std::string> neverReached() {
    std::vector<std::string> names;
    for (const MarkCounter* mark : allMarks()) {
        if (mark->times() == 0)
            names.push_back(mark->name());
    }
    return names;
}

}  // namespace valdorn::simulation
