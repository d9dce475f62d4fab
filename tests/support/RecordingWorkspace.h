#pragma once

#include <string>
#include <vector>

#include "platform/Workspace.h"

namespace valdorn {

// Keeps what was to be opened, and answers what the test says; text without a scheme is opened by
// nothing.
class RecordingWorkspace : public Workspace {
public:
    std::vector<std::string> filesOpened;  // asked for, whatever the answer
    std::vector<std::string> urlsOpened;
    bool answer = true;

    bool openFile(const std::string& path) override {
        filesOpened.push_back(path);
        return answer;
    }

    bool openUrl(const std::string& url) override {
        urlsOpened.push_back(url);
        return answer && url.find(':') != std::string::npos;
    }
};

}  // namespace valdorn
