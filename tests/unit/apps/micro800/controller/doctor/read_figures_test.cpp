#include "apps/micro800/controller/doctor/read_figures.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(ReadFigures, MedianJitterAndLoss) {
    ReadFigures figures;
    EXPECT_EQ(figures.text(),
              QString("0 reads: median 0.0 ms, p99 0.0 ms, jitter 0.0 ms, loss 0 %"));
    for (const double ms : {6.0, 8.0, 5.0, 6.0}) {
        figures.add(ms);
    }
    EXPECT_EQ(figures.jitter(), 2.0);  // 2, 3, 1
    figures.addLost();
    EXPECT_EQ(figures.text(),
              QString("5 reads: median 6.0 ms, p99 8.0 ms, jitter 2.0 ms, loss 20 %"));
    EXPECT_EQ(figures.json().value("lost").toInt(), 1);
    EXPECT_EQ(figures.json().value("loss_percent").toDouble(), 20.0);
}

}  // namespace
