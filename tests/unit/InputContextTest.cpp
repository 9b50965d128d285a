// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"
#include "platform/QInputContext.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QTest>

namespace {
int contextsOf(const QObject &owner)
{
    return int(std::count_if(owner.children().cbegin(), owner.children().cend(),
        [](const QObject *child) { return dynamic_cast<const QInputContext *>(child) != nullptr; }));
}
} // namespace

/// The input context that the environment can ask for, with and without a plug-in that has it.
class InputContextTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        QCoreApplication::setLibraryPaths({QStringLiteral(KELVO_TEST_PLUGINS)});
    }
    void cleanup()
    {
        qunsetenv("QKELVO_USE_INPUT_CTX");
        QCoreApplication::setLibraryPaths({});
    }

    void variable_data()
    {
        QTest::addColumn<bool>("set");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<bool>("used");
        QTest::newRow("unset") << false << QByteArray() << false;
        QTest::newRow("empty") << true << QByteArray("") << false;
        QTest::newRow("0") << true << QByteArray("0") << false;
        QTest::newRow("-1") << true << QByteArray("-1") << false;
        QTest::newRow("abc") << true << QByteArray("abc") << false;
        QTest::newRow("hexadecimal") << true << QByteArray("0x1") << false;
        QTest::newRow("too large") << true << QByteArray("99999999999") << false;
        QTest::newRow("1") << true << QByteArray("1") << true;
        QTest::newRow("7") << true << QByteArray("7") << true;
    }

    void variable()
    {
        QFETCH(bool, set);
        QFETCH(QByteArray, value);
        QFETCH(bool, used);
        if (set)
            qputenv("QKELVO_USE_INPUT_CTX", value);
        LogRecorder log;
        const KelvoMainWindow window(nullptr, nullptr);
        QCOMPARE(log.count("Using ZuvInputContext"), used ? 1 : 0);
        QCOMPARE(contextsOf(window), used ? 1 : 0);
        QStringList served;
        for (const QWidget *entry : window.findChildren<QWidget *>()) {
            if (entry->property("input-context").toBool())
                served.append(entry->objectName());
        }
        // Those of the two dialogs with text entry, and nothing else.
        QCOMPARE(served, used ? QStringList({"m_nameEdit", "m_searchTermEdit"}) : QStringList());
    }

    void failingFactoryIsAccepted()
    {
        QCoreApplication::setLibraryPaths({});
        qputenv("QKELVO_USE_INPUT_CTX", "1");
        LogRecorder log;
        const KelvoMainWindow window(nullptr, nullptr);
        QVERIFY(log.contains("Using ZuvInputContext"));
        QCOMPARE(contextsOf(window), 0);
    }

    void factory()
    {
        QObject parent;
        QCOMPARE(QInputContextFactory::create("Unknown", &parent), nullptr);
        QCOMPARE(QInputContextFactory::create("Refusing", &parent), nullptr);
        const QInputContext *context = QInputContextFactory::create("ZuvInputContext", &parent);
        QVERIFY(context);
        QCOMPARE(context->parent(), &parent);
    }
};

KELVO_WIDGET_TEST(InputContextTest)
#include "InputContextTest.moc"
