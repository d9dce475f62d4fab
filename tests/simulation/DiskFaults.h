#pragma once

namespace valdorn::simulation {

// What does not work on the disk at the moment: shared by the real files' fake and the model.
struct DiskFaults {
    enum class Writing { works, fails, leavesHalf };

    Writing list = Writing::works;  // of "runners.json"
    bool readingList = false;
    bool configuration = false;  // its replacement fails
    bool makingFolders = false;
    bool removing = false;
    bool openingLog = false;    // for appending
    bool appending = false;     // to the log; nothing of it arrives
    bool findingLog = false;    // opening it for reading
    bool measuringLog = false;  // its size
    bool readingLog = false;    // its bytes
};

}  // namespace valdorn::simulation
