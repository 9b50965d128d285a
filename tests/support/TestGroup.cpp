// SPDX-License-Identifier: MIT
#include "TestGroup.h"

#include <QTest>

#include <cstdio>
#include <cstring>
#include <vector>

namespace {
std::vector<TestGroup::Entry> &entries()
{
    static std::vector<TestGroup::Entry> all;
    return all;
}

int run(const TestGroup::Entry &entry, int argc, char **argv)
{
    // Sizes in pixels are the same whatever the screen claims to be.
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    const std::unique_ptr<QCoreApplication> application = entry.createApplication(argc, argv);
    const std::unique_ptr<QObject> test = entry.createTest();
    return QTest::qExec(test.get(), argc, argv);
}

int listClasses()
{
    std::fputs("The first argument names the class to run, one of:\n", stderr);
    for (const TestGroup::Entry &entry : entries())
        std::fprintf(stderr, "  %s\n", entry.className);
    return 2;
}
} // namespace

bool TestGroup::add(const Entry &entry)
{
    entries().push_back(entry);
    return true;
}

int main(int argc, char **argv)
{
    for (const TestGroup::Entry &entry : entries()) {
        if (argc > 1 && std::strcmp(argv[1], entry.className) == 0) {
            // Qt Test sees its own arguments only.
            argv[1] = argv[0];
            return run(entry, argc - 1, argv + 1);
        }
    }
    return listClasses();
}
