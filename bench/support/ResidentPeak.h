#pragma once

#include <fstream>
#include <string>

namespace valdorn {

// By how much the process's resident memory has been, at its highest, above what it is when this is
// made. The kernel keeps the highest; it is told to forget what was before.
class ResidentPeak {
public:
    ResidentPeak() {
        std::ofstream("/proc/self/clear_refs") << "5";
        before_ = highestKiB();
    }

    long grownKiB() const { return highestKiB() - before_; }

private:
    static long highestKiB() {
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            long number = 0;
            if (word == "VmHWM:" && status >> number)
                return number;
        }
        return 0;
    }

    long before_ = 0;
};

}  // namespace valdorn
