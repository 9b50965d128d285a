// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>

#include <memory>

/// Test classes that share one program: every program of its own would cost a link and a run of moc. CTest starts the
/// program once per class, with the class's name as the first argument, so that classes still cannot disturb each
/// other.
namespace TestGroup {
struct Entry
{
    /// Kept, not copied.
    const char *className;
    std::unique_ptr<QCoreApplication> (*createApplication)(int &argc, char **argv);
    std::unique_ptr<QObject> (*createTest)();
};

/// Called before main() by KELVO_TEST and KELVO_WIDGET_TEST.
bool add(const Entry &entry);

template <typename Application> std::unique_ptr<QCoreApplication> createApplication(int &argc, char **argv)
{
    return std::make_unique<Application>(argc, argv);
}

template <typename Test> std::unique_ptr<QObject> createTest()
{
    return std::make_unique<Test>();
}
} // namespace TestGroup

#define KELVO_TEST_WITH(Application, Class)                                                                  \
    static const bool is##Class##Added                                                                       \
        = TestGroup::add({#Class, TestGroup::createApplication<Application>, TestGroup::createTest<Class>});

/// At the end of a test's source: adds the class to the program that it is built into.
#define KELVO_TEST(Class) KELVO_TEST_WITH(QCoreApplication, Class)
/// The same for a class that needs a QApplication.
#define KELVO_WIDGET_TEST(Class) KELVO_TEST_WITH(QApplication, Class)
