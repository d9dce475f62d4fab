#include <fstream>
#include <list>
#include <memory>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "contracts/HostInfoContract.h"
#include "platform/posix/PosixHostInfo.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

namespace valdorn {
namespace {

class PosixFixture {
public:
    void setHome(const std::string& path) { setVariable("HOME", path); }

    void setName(const std::optional<std::string>& name) {
        if (!name)
            return;
        std::string quoted;
        for (const char c : *name)
            quoted += c == '"' ? std::string("\\\"") : std::string(1, c);
        std::ofstream(folder_ / "machine-info") << "PRETTY_HOSTNAME=\"" << quoted << "\"\n";
    }

    void setVariable(const std::string& name, const std::string& value) {
        variables_.emplace_back(name, value);
    }

    HostInfo& host() {
        if (!host_)
            host_ = std::make_unique<PosixHostInfo>(HostSources{
                folder_ / "machine-info", [] { return "localhost"; }, [] { return "/"; }});
        return *host_;
    }

private:
    TemporaryFolder folder_;
    std::list<ScopedVariable> variables_;
    std::unique_ptr<PosixHostInfo> host_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, HostInfoContract, PosixFixture);

class PosixHostInfoTest : public testing::Test {
protected:
    std::string homeFor(const std::optional<std::string>& variable) const {
        const ScopedVariable scope("HOME", variable);
        return PosixHostInfo(sources).homeFolder();
    }

    // The computer's name when the machine-info file has that text.
    std::optional<std::string> nameFor(const std::string& machineInfo) {
        std::ofstream(sources.machineInfoFile) << machineInfo;
        return PosixHostInfo(sources).computerName();
    }

    TemporaryFolder folder;
    std::string kernelName = "kernel";
    std::string account = "/home/account";
    HostSources sources{folder / "machine-info", [this] { return kernelName; },
                        [this] { return account; }};
    const ScopedVariable home{"HOME", "/home/ada"};
};

TEST_F(PosixHostInfoTest, TheHomeFolderHasNoTrailingSlash) {
    EXPECT_EQ(homeFor("/home/ada/"), "/home/ada");
    EXPECT_EQ(homeFor("/home/ada///"), "/home/ada");
    EXPECT_EQ(homeFor("/"), "/");
    EXPECT_EQ(homeFor("//"), "/");
}

TEST_F(PosixHostInfoTest, TheAccountsHomeStandsInForAnUnusableVariable) {
    account = "/home/account/";
    EXPECT_EQ(homeFor(std::nullopt), "/home/account");
    EXPECT_EQ(homeFor(""), "/home/account");
    EXPECT_EQ(homeFor("relative/home"), "/home/account");
}

TEST_F(PosixHostInfoTest, WithoutAnyHomeFolderTheProgramAbortsWithOneLine) {
    for (const char* const unusable : {"", "relative"}) {
        account = unusable;
        EXPECT_DEATH(homeFor(std::nullopt),
                     "^valdorn: neither \\$HOME nor the account names a home folder\n");
    }
}

TEST_F(PosixHostInfoTest, ThePrettyNameGoesBeforeTheKernels) {
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME=Pretty\n"), "Pretty");
    EXPECT_EQ(nameFor("ICON_NAME=computer\n"), "kernel");
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME=\n"), "kernel");
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME=\"\"\n"), "kernel");
    EXPECT_EQ(nameFor(""), "kernel");
}

TEST_F(PosixHostInfoTest, AMissingMachineInfoFileIsNoError) {
    EXPECT_EQ(PosixHostInfo(sources).computerName(), "kernel");
}

TEST_F(PosixHostInfoTest, AMachineInfoFileThatIsANamedPipeIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(sources.machineInfoFile.c_str(), 0600), 0);
    EXPECT_EQ(PosixHostInfo(sources).computerName(), "kernel");
}

TEST_F(PosixHostInfoTest, ReadsTheQuotesOfAShell) {
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME=\"Ada's Mini\"\n"), "Ada's Mini");
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME='Ada \"the\" \\Mini'\n"), "Ada \"the\" \\Mini");
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME=\"a \\\"b\\\" \\$c \\\\d\"\n"), "a \"b\" $c \\d");
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME=Ada\\ Mini\n"), "Ada Mini");
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME=Ada\" \"Mini"), "Ada Mini");
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME=\"Büro\"\r\n"), "Büro");
}

TEST_F(PosixHostInfoTest, FindsTheLineAmongOthers) {
    EXPECT_EQ(nameFor("# PRETTY_HOSTNAME=comment\nCHASSIS=laptop\n  PRETTY_HOSTNAME=\"Mini\"  \n"
                      "OTHER_PRETTY_HOSTNAME=other\n"),
              "Mini");
    EXPECT_EQ(nameFor("PRETTY_HOSTNAME=first\nPRETTY_HOSTNAME=last"), "last");
}

TEST_F(PosixHostInfoTest, AKernelNameThatSaysNothingIsNoName) {
    for (const char* const nothing : {"", "localhost", "localhost.localdomain", "(none)"}) {
        kernelName = nothing;
        EXPECT_EQ(PosixHostInfo(sources).computerName(), std::nullopt) << nothing;
    }
    kernelName = "localhost7";
    EXPECT_EQ(PosixHostInfo(sources).computerName(), "localhost7");
}

TEST_F(PosixHostInfoTest, EverythingIsAsItWasAtTheStart) {
    const PosixHostInfo host(sources);
    const std::vector<std::string> environment = host.environment();
    const ScopedVariable later("HOME", "/home/later");
    kernelName = "later";
    EXPECT_EQ(host.homeFolder(), "/home/ada");
    EXPECT_EQ(host.computerName(), "kernel");
    EXPECT_EQ(host.environment(), environment);
}

TEST_F(PosixHostInfoTest, TheEnvironmentKeepsItsOrder) {
    const std::vector<std::string> variables = PosixHostInfo(sources).environment();
    std::size_t at = 0;
    for (char** variable = environ; *variable != nullptr; ++variable, ++at)
        EXPECT_EQ(variables.at(at), *variable);
    EXPECT_EQ(variables.size(), at);
}

TEST_F(PosixHostInfoTest, KnowsThisComputer) {
    const HostSources real = HostSources::ofThisComputer();
    char name[256] = {};
    ASSERT_EQ(gethostname(name, sizeof name - 1), 0);
    EXPECT_EQ(real.hostName(), name);
    // An account need not be listed; when it is, its home is a path.
    const std::string listed = real.accountHome();
    EXPECT_TRUE(listed.empty() || listed.starts_with('/')) << listed;
    EXPECT_EQ(PosixHostInfo().homeFolder(), "/home/ada");
}

}  // namespace
}  // namespace valdorn
