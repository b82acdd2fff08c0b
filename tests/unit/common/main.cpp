#include <gtest/gtest.h>

#include <QCoreApplication>

// Qt's SQL layer and the path helpers want an application object.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
