// Runs the tests of the window's widgets in one Qt program with the program's texts.
#include "vnquery/messages/Messages.h"
#include "vnquery/window/ProgramStyle.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    vnquery::UseProgramStyle();
    vnquery::LoadTexts();
    return RUN_ALL_TESTS();
}
