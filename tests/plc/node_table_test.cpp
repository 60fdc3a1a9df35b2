#include "fins/node_table.h"

#include <gtest/gtest.h>

// Who is asked whether it still lives when its node is wanted.

TEST(NodeTableTest, OnlyTheHolderAtTheSameAddressIsAsked)
{
    plc::NodeTable nodes(1, 16);
    int asked = 0;
    unsigned node = 0;
    ASSERT_EQ(nodes.assign(9, {"192.168.250.9", [&asked] { ++asked; }}, &node), plc::TCP_OK);
    EXPECT_EQ(nodes.assign(9, {"192.168.250.10", [] {}}, &node), plc::TCP_NODE_IN_USE);
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(nodes.assign(9, {"192.168.250.9", [] {}}, &node), plc::TCP_NODE_IN_USE);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(nodes.assign(10, {"192.168.250.9", [] {}}, &node), plc::TCP_OK);
    EXPECT_EQ(asked, 1);
    nodes.release(9);
    EXPECT_EQ(nodes.assign(9, {"192.168.250.9", [] {}}, &node), plc::TCP_OK);
    EXPECT_EQ(asked, 1);
}
