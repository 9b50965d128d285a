// SPDX-License-Identifier: MIT
#include "ForeignLibrary.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

namespace {
using Version = unsigned (*)();
using ZlibVersion = const char *(*)();
} // namespace

/// On libpng, which Qt's graphics bring anyway, and zlib, which it needs.
class ForeignLibraryTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void findsFunctionsOfALibraryAndOfThoseThatItNeeds()
    {
        ForeignLibrary library({"libpng16.so.16"});
        Version version = nullptr;
        ZlibVersion zlibVersion = nullptr;
        library.find(version, "png_access_version_number");
        library.find(zlibVersion, "zlibVersion");
        QVERIFY2(library.isWhole(), qPrintable(library.errorText()));
        QVERIFY(library.errorText().isEmpty());
        QVERIFY(version() >= 10600);
        QCOMPARE(zlibVersion()[0], '1');
    }

    void takesTheFirstThatThereIs()
    {
        ForeignLibrary library({"libkelvo-missing.so.1", "libpng16.so.16"});
        Version version = nullptr;
        library.find(version, "png_access_version_number");
        QVERIFY2(library.isWhole(), qPrintable(library.errorText()));
        QVERIFY(version);
    }

    void saysWhatIsMissing()
    {
        ForeignLibrary none({"libkelvo-missing.so.3"});
        QVERIFY(!none.isWhole());
        QVERIFY2(none.errorText().contains("libkelvo-missing.so.3"), qPrintable(none.errorText()));
        const QString why = none.errorText();
        Version version = &dummy;
        none.find(version, "png_access_version_number");
        QVERIFY(!version);
        QCOMPARE(none.errorText(), why);

        ForeignLibrary library({"libpng16.so.16"});
        library.find(version, "kelvo_missing_function");
        QVERIFY(!version);
        QVERIFY(!library.isWhole());
        QVERIFY2(library.errorText().contains("kelvo_missing_function"), qPrintable(library.errorText()));
        // What is found afterwards makes it no more whole.
        library.find(version, "png_access_version_number");
        QVERIFY(version);
        QVERIFY(!library.isWhole());
        QVERIFY(library.errorText().contains("kelvo_missing_function"));
    }

private:
    static unsigned dummy() { return 0; }
};

KELVO_TEST(ForeignLibraryTest)
#include "ForeignLibraryTest.moc"
