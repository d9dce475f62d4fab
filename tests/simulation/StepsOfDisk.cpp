#include "simulation/Marks.h"
#include "simulation/Steps.h"

namespace valdorn::simulation {

namespace {

using Writing = DiskFaults::Writing;

void breaks(Stage& stage, Random& random) {
    DiskFaults& faults = stage.model.disk.faults;
    const auto flags = {&DiskFaults::configuration, &DiskFaults::makingFolders,
                        &DiskFaults::removing,      &DiskFaults::openingLog,
                        &DiskFaults::appending,     &DiskFaults::findingLog,
                        &DiskFaults::measuringLog,  &DiskFaults::readingLog};
    if (random.chance(25))
        faults.list = random.pick({Writing::fails, Writing::leavesHalf});
    else
        faults.*random.pick(flags) = true;
    stage.tell("a part of the disk fails");
}

void heals(Stage& stage, Random&) {
    stage.model.disk.faults = {};
    stage.tell("the disk works");
}

void markerComesOrGoes(Stage& stage, Random& random) {
    const auto runner = stage.anyRunner(random);
    if (!runner)
        return;
    const std::string folder = runner->expected->dataFolder();
    const std::string marker = folder + "/.runner";
    MemoryFileSystem& files = stage.machine.files;
    if (stage.model.disk.exists(marker)) {
        stage.model.disk.unlink(marker);
        (void)files.removeTree(marker);
    } else {
        stage.model.disk.plantFolder(folder);
        (void)files.makeFolders(folder);
        if (random.chance(80)) {
            stage.model.disk.plantFile(marker, "x");
            (void)files.replaceAtomically(marker, "x");
        } else {
            stage.model.disk.plantFolder(marker);
            (void)files.makeFolders(marker);
        }
    }
    stage.tell("the marker of runner " + std::to_string(runner->expected->view().number) +
               " comes or goes");
}

// Somebody else removes, empties, replaces or lengthens the log, or puts a folder in its place.
void logIsTamperedWith(Stage& stage, Random& random) {
    const auto runner = stage.anyRunner(random);
    if (!runner)
        return;
    const std::string log = runner->expected->dataFolder() + "/valdorn.log";
    ModelDisk& disk = stage.model.disk;
    MemoryFileSystem& files = stage.machine.files;
    const std::size_t kind = random.below(10);
    stage.tell("the log is tampered with, " + std::to_string(kind));
    if (kind < 3) {
        const std::string text =
            random.pick({"", "\nafter an empty line\n", "short\n", "a\r\nb\n\n\xFFx\n", "no end"});
        disk.overwrite(log, text);
        (void)files.replaceContent(log, text);
    } else if (kind < 5) {
        disk.plantFile(log, "another file\nof two lines\n");
        (void)files.replaceAtomically(log, "another file\nof two lines\n");
    } else if (kind < 8) {
        disk.unlink(log);
        (void)files.removeTree(log);
    } else if (kind == 8) {
        disk.unlink(log);
        disk.plantFolder(log);
        (void)files.removeTree(log);
        (void)files.makeFolders(log);
    } else if (random.chance(20)) {
        std::string text;
        for (int number = 0; number < 5300; ++number)
            text += "level=info line " + std::to_string(number) + "\n";
        disk.overwrite(log, text);
        (void)files.replaceContent(log, text);
    }
}

// A runner's folder goes, or the whole of what the program keeps.
void folderVanishes(Stage& stage, Random& random) {
    const auto runner = stage.anyRunner(random);
    if (!runner)
        return;
    const std::string folder = runner->expected->dataFolder();
    stage.model.disk.unlink(folder);
    (void)stage.machine.files.removeTree(folder);
    stage.tell("folder " + folder + " is taken away");
}

}  // namespace

void Steps::addDiskSteps(std::vector<StepKind>& kinds) {
    kinds.push_back({Field::disk, 25, breaks});
    kinds.push_back({Field::disk, 25, heals});
    kinds.push_back({Field::disk, 35, markerComesOrGoes});
    kinds.push_back({Field::disk, 20, logIsTamperedWith});
    kinds.push_back({Field::disk, 4, folderVanishes});
}

}  // namespace valdorn::simulation
