#pragma once

#include <QApplication>
#include <QtTest>

namespace testsupport {

/// Prepares the process before the application object exists: the time zone (CET with summer time, by rule and so
/// without a zone database), and a watchdog that ends a program that hangs.
void prepareProcess(int secondsUntilWatchdog);

} // namespace testsupport

/// Main function of a test program for one test class. @p Application is QCoreApplication or QApplication.
#define DFL_TEST_MAIN_WITHIN(TestClass, Application, secondsUntilWatchdog)                                             \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        testsupport::prepareProcess(secondsUntilWatchdog);                                                             \
        Application app(argc, argv);                                                                                   \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }

#define DFL_TEST_MAIN_WITH(TestClass, Application) DFL_TEST_MAIN_WITHIN(TestClass, Application, 150)
#define DFL_TEST_MAIN(TestClass) DFL_TEST_MAIN_WITH(TestClass, QApplication)
