// Test entry for widget tests: a QApplication on the display of the run (Xvfb in scripts/test).
#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
