#include "fleet/RunnersStore.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <tuple>
#include <utility>

#include "fleet/RunnerRecords.h"
#include "fleet/Uuid.h"
#include "platform/FileSystem.h"
#include "platform/HostInfo.h"
#include "platform/Path.h"
#include "platform/UserDefaults.h"
#include "runner/Config.h"

namespace valdorn {

namespace {

// What a start with no usable name falls back to.
constexpr char fallbackName[] = "runner";

// The identity of the runner that the one-runner settings become.
constexpr char legacyId[] = "legacy";

// An id that names one folder inside the "runners" folder. The file may be edited by hand, and an
// id like ".." or "" must not turn the removal of one runner into the removal of everything.
bool namesOneFolder(const std::string& id) {
    return !id.empty() && id != "." && id != ".." && id.find('/') == std::string::npos &&
           id.find('\0') == std::string::npos;
}

}  // namespace

RunnersStore& RunnersStore::shared(const Services& services) {
    static const auto& store = *new std::shared_ptr<RunnersStore>(create(services));
    return *store;
}

std::shared_ptr<RunnersStore> RunnersStore::create(const Services& services) {
    auto store = std::make_shared<RunnersStore>(Key{}, services);
    store->load();
    return store;
}

RunnersStore::RunnersStore(Key, const Services& services)
    : services_(services),
      folder_(Config::applicationSupportFolder(services.hostInfo.homeFolder())),
      runners_(*this, {}) {}

void RunnersStore::load() {
    // Where the folder cannot be made, nothing is remembered, but the runners work.
    std::ignore = services_.fileSystem.makeFolders(folder_);
    Runners loaded;
    for (RunnerConfig& record : loadOrMigrate()) {
        loaded.push_back(RunnerManager::create(std::move(record), services_));
    }
    runners_.set(std::move(loaded));
    for (const auto& runner : runners())
        observe(*runner);
}

std::vector<RunnerConfig> RunnersStore::loadOrMigrate() {
    if (const auto json = services_.fileSystem.read(appendPathComponent(folder_, "runners.json"))) {
        auto records = RunnerRecords::decode(json.value());
        if (records && !records->empty())
            return std::move(*records);
    }
    std::vector<RunnerConfig> migrated = {migratedRecord()};
    write(migrated);
    return migrated;
}

RunnerConfig RunnersStore::migratedRecord() const {
    const auto text = [&defaults = services_.userDefaults](const char* key) {
        return defaults.string(key).value_or("");
    };
    RunnerConfig record;
    record.id = legacyId;
    record.name = text(Config::runnerNameKey);
    if (record.name.empty())
        record.name = fallbackName;
    record.instanceURL = text(Config::instanceURLKey);
    record.labels = text(Config::labelsKey);
    record.extraPath = text(Config::extraPathKey);
    record.legacy = true;
    return record;
}

void RunnersStore::observe(RunnerManager& runner) {
    cancellables_.push_back(runner.onConfigWillSet([weak = weak_from_this()](const RunnerConfig&)
                                                       VALDORN_ON_MAIN_THREAD {
                                                           if (const auto store = weak.lock())
                                                               store->save();
                                                       }));
}

const std::shared_ptr<RunnerManager>& RunnersStore::first() const {
    if (runners().empty())
        std::abort();
    return runners().front();
}

std::shared_ptr<RunnerManager> RunnersStore::add(const std::string& name) {
    RunnerConfig record;
    record.id = makeUuid();
    record.name = name;
    record.labels = defaultLabels;
    auto runner = RunnerManager::create(std::move(record), services_);
    observe(*runner);
    Runners extended = runners();
    extended.push_back(runner);
    runners_.set(std::move(extended));
    save();
    return runner;
}

void RunnersStore::remove(const std::shared_ptr<RunnerManager>& runner) {
    runner->stop();
    deleteDataFolder(*runner);
    Runners rest = runners();
    std::erase(rest, runner);
    // From here on a `runner` that refers into the list is gone.
    runners_.set(std::move(rest));
    save();
}

void RunnersStore::deleteDataFolder(const RunnerManager& runner) {
    if (runner.config().legacy || !namesOneFolder(runner.id()))
        return;
    // What cannot be deleted stays; the runner is gone from the list all the same.
    std::ignore = services_.fileSystem.removeTree(runner.dataDir());
}

void RunnersStore::save() {
    std::vector<RunnerConfig> records;
    for (const auto& runner : runners())
        records.push_back(runner->config());
    write(records);
}

void RunnersStore::write(const std::vector<RunnerConfig>& records) {
    const auto json = RunnerRecords::encode(records);
    if (!json)
        return;
    // In place, as the file has always been written; a failure is made good by the next save.
    std::ignore =
        services_.fileSystem.replaceContent(appendPathComponent(folder_, "runners.json"), *json);
}

void RunnersStore::startAllRegistered() {
    for (const auto& runner : runners())
        runner->start();
}

void RunnersStore::stopAll() {
    for (const auto& runner : runners())
        runner->stop();
}

RunnerStatus RunnersStore::aggregateStatus() const {
    constexpr std::array precedence = {RunnerStatus::building, RunnerStatus::starting,
                                       RunnerStatus::connected, RunnerStatus::noNetwork,
                                       RunnerStatus::stopped};
    for (const RunnerStatus status : precedence) {
        for (const auto& runner : runners()) {
            if (runner->status() == status)
                return status;
        }
    }
    return RunnerStatus::notRegistered;
}

}  // namespace valdorn
