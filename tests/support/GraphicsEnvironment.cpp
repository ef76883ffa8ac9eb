// Every test of the window's drawing needs GDI+ and the fonts, once a process.

#include "ui/Fonts.h"

#include <gtest/gtest.h>

namespace {

class Graphics : public testing::Environment {
    void SetUp() override {
        StartGraphics();
        MakeFonts();
    }
};

const testing::Environment* const Started = testing::AddGlobalTestEnvironment(new Graphics);

} // namespace
