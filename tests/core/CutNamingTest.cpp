// The rotation a cut is written with, from the picture on screen.
#include "core/encoding/CutNaming.h"

#include <gtest/gtest.h>

TEST(CutNaming, only_quarter_turns_give_a_rotation) {
    EXPECT_EQ(encoding::rotationFromOrientation(90), 1);
    EXPECT_EQ(encoding::rotationFromOrientation(180), 2);
    EXPECT_EQ(encoding::rotationFromOrientation(270), 3);
    EXPECT_EQ(encoding::rotationFromOrientation(0), 0);
    EXPECT_EQ(encoding::rotationFromOrientation(45), 0);
}
