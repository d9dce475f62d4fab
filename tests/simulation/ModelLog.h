#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "logs/LevelFilter.h"
#include "simulation/ModelMachine.h"

namespace valdorn::simulation {

// The log window by the rules: the last lines of a file that is looked at every second, and those of
// them that pass the filters. It reads the whole file each time.
class ModelLog {
public:
    ModelLog(ModelMachine& machine, std::string path);
    ~ModelLog();
    ModelLog(const ModelLog&) = delete;
    ModelLog& operator=(const ModelLog&) = delete;

    void start();
    void stop();
    void clear();
    void setQuery(const std::string& query);
    void setLevel(LevelFilter level);
    void setFollow(bool follow) { follow_ = follow; }

    bool isPolling() const { return timer_ != nullptr; }
    const std::vector<std::string>& lines() const { return lines_; }
    const std::vector<std::string>& filtered() const { return filtered_; }
    // The lines that pass, with line feeds between them.
    std::string text() const;
    int scrolls() const { return scrolls_; }

private:
    bool canRead() const;
    void reload();
    void poll();
    void announce();
    void take(std::vector<std::string> lines);
    void filter();
    bool passes(const std::string& line) const;

    ModelLoop& loop_;
    const ModelDisk& disk_;
    Announcements& announcements_;
    const std::string path_;
    ModelLoop::Handle timer_;
    std::size_t offset_ = 0;
    std::vector<std::string> lines_;
    std::vector<std::string> filtered_;
    std::string query_;
    LevelFilter level_ = LevelFilter::all;
    bool follow_ = true;
    int scrolls_ = 0;
};

}  // namespace valdorn::simulation
