#pragma once

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/BundleResources.h"

namespace valdorn {

// What every BundleResources does. The fixture has:
//   BundleResources& resources();               // nothing is shipped at first
//   std::string ship(const std::string& name);  // returns where it was put
//   void withdraw(const std::string& name);
template <typename Fixture>
class BundleResourcesContract : public testing::Test {
protected:
    Fixture fixture;
};

TYPED_TEST_SUITE_P(BundleResourcesContract);

TYPED_TEST_P(BundleResourcesContract, WhatWasNotShippedHasNoPath) {
    this->fixture.ship("other");
    EXPECT_EQ(this->fixture.resources().path("act_runner"), std::nullopt);
}

TYPED_TEST_P(BundleResourcesContract, FindsWhatWasShipped) {
    const std::string path = this->fixture.ship("act_runner");
    EXPECT_TRUE(path.starts_with('/'));
    EXPECT_EQ(this->fixture.resources().path("act_runner"), path);
}

TYPED_TEST_P(BundleResourcesContract, LooksAfreshOnEachCall) {
    const std::string path = this->fixture.ship("act_runner");
    this->fixture.withdraw("act_runner");
    EXPECT_EQ(this->fixture.resources().path("act_runner"), std::nullopt);
    this->fixture.ship("act_runner");
    EXPECT_EQ(this->fixture.resources().path("act_runner"), path);
}

REGISTER_TYPED_TEST_SUITE_P(BundleResourcesContract, WhatWasNotShippedHasNoPath,
                            FindsWhatWasShipped, LooksAfreshOnEachCall);

}  // namespace valdorn
