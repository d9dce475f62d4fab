#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/Workspace.h"

namespace valdorn {

// What every Workspace does. The fixture has:
//   Workspace& workspace();  // on a desktop with programs for files and for "x-settings:" URLs
//   void removePrograms();   // from now on the desktop has nothing to open anything with
//   std::vector<std::string> filesOpened();  // paths that a program was given, in order
//   std::vector<std::string> urlsOpened();
template <typename Fixture>
class WorkspaceContract : public testing::Test {
protected:
    Workspace& workspace() { return fixture.workspace(); }

    Fixture fixture;
    const std::vector<std::string> nothing{};
};

TYPED_TEST_SUITE_P(WorkspaceContract);

TYPED_TEST_P(WorkspaceContract, OpensAFileWhateverCharactersItsPathHas) {
    const std::vector<std::string> paths{"/tmp/plain.log", "/tmp/a b#c?d%20/Übersicht.log",
                                         "/tmp/http://host/x:y"};
    for (const std::string& path : paths)
        EXPECT_TRUE(this->workspace().openFile(path)) << path;
    EXPECT_EQ(this->fixture.filesOpened(), paths);
    EXPECT_EQ(this->fixture.urlsOpened(), this->nothing);
}

TYPED_TEST_P(WorkspaceContract, OpensAUrlWithTheProgramForItsScheme) {
    const std::vector<std::string> urls{"x-settings:privacy?Network", "x-settings://host/a%20b#c"};
    for (const std::string& url : urls)
        EXPECT_TRUE(this->workspace().openUrl(url)) << url;
    EXPECT_EQ(this->fixture.urlsOpened(), urls);
    EXPECT_EQ(this->fixture.filesOpened(), this->nothing);
}

TYPED_TEST_P(WorkspaceContract, NoProgramOpensTextWithoutAScheme) {
    for (const char* const text : {"", "nonsense", "/just/a/path"})
        EXPECT_FALSE(this->workspace().openUrl(text)) << text;
}

TYPED_TEST_P(WorkspaceContract, TellsThatThereIsNothingToOpenItWith) {
    this->fixture.removePrograms();
    EXPECT_FALSE(this->workspace().openFile("/tmp/plain.log"));
    EXPECT_FALSE(this->workspace().openUrl("x-settings:privacy"));
}

REGISTER_TYPED_TEST_SUITE_P(WorkspaceContract, OpensAFileWhateverCharactersItsPathHas,
                            OpensAUrlWithTheProgramForItsScheme, NoProgramOpensTextWithoutAScheme,
                            TellsThatThereIsNothingToOpenItWith);

}  // namespace valdorn
