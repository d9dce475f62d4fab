#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

namespace valdorn {

// A log of several launches of the tests' daemon, compared with what each of them has printed.
class KeptLines {
public:
    explicit KeptLines(const std::vector<std::string>& lines);

    // The next launch. It died after a flood, or ended politely; of the last one nobody may have
    // read the end.
    void expect(pid_t pid, bool hasDied, bool isLast);

    // Launches of which a line is missing, doubled or out of order.
    std::size_t hurtLaunches() const { return hurt_; }

    // Lines that no launch has printed.
    std::size_t strangeLines() const;

private:
    std::map<pid_t, std::vector<std::string>> lines_;  // of those not yet expected
    std::size_t hurt_ = 0;
    std::size_t strange_ = 0;
};

}  // namespace valdorn
