// SPDX-License-Identifier: Apache-2.0
#include "host/ViewTree.h"

#include <gtest/gtest.h>

#include "host/Plugin.h"

namespace host {
namespace {

// As when somebody deletes a group between two listings.
TEST(ViewTreeTest, AGroupThatHasGoneIsReadAsEmpty) {
  const Plugin plugin(PLUGIN_LIBRARY);
  const ViewTree tree = ReadGroup(plugin, "77777");
  ASSERT_EQ(tree.folders.size(), 1u);
  EXPECT_EQ(tree.folders[0].id, "77777");
  EXPECT_TRUE(tree.folders[0].views.empty());
}

}  // namespace
}  // namespace host
