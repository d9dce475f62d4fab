#pragma once

#include <string>
#include <thread>

namespace valdorn {

// A session bus that lets guests in, one after the other, on a thread of its own.
class BusStandin {
public:
    // Throws std::system_error where no socket can be had there.
    explicit BusStandin(const std::string& path);
    BusStandin(const BusStandin&) = delete;
    BusStandin& operator=(const BusStandin&) = delete;
    // Ends also where no guest has come.
    ~BusStandin();

private:
    void serve() const;

    int listening_ = -1;
    std::thread thread_;
};

}  // namespace valdorn
