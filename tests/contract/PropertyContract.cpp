// SPDX-License-Identifier: MIT
#include "ContractCase.h"
#include "ContractSuite.h"

namespace {
/// Property, value set, value reported.
struct Echo
{
    Step step;
    const char *name;
    QVariant set;
    QVariant reported;
};

class PropertyContract : public ContractCase
{
    Q_OBJECT
public:
    using ContractCase::ContractCase;

private Q_SLOTS:
    void reportsWhatTookEffect_data();
    void reportsWhatTookEffect();
    void advancesByItselfAtStart();
    void tellsItsVolume();
    void refusesUnknownNames();
    void answersUnknownNames();
    void refusesUnusableValues_data();
    void refusesUnusableValues();
    void keepsWhatWasSetFromItemToItem();

private:
    QVariant ask(const QString &name);
};

QVariant PropertyContract::ask(const QString &name)
{
    const qsizetype before = heard().propertyAnswers.size();
    renderer()->kelvoProperty(name, m_probe.get(), "propertyAnswer(QString,QVariant)");
    if (!reaches([&] { return heard().propertyAnswers.size() > before; }))
        return QStringLiteral("no answer");
    const auto answer = heard().propertyAnswers.constLast();
    return answer.first == name ? answer.second : QStringLiteral("answered as ") + answer.first;
}

void PropertyContract::reportsWhatTookEffect_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("set");
    QTest::addColumn<QVariant>("reported");
    QTest::addColumn<bool>("whilePlaying");
    const QList<Echo> echoes{
        {Step::Seek, "auto-advance", false, false},
        {Step::Volume, "volume", 0, 0U},
        {Step::Volume, "volume", 42, 42U},
        {Step::Volume, "volume", 99, 99U},
        {Step::VideoProperties, "xid", 0U, 0U},
        {Step::VideoProperties, "autopaint", false, false},
        {Step::VideoProperties, "render-rectangle", "517,84,320,240", "517,84,320,240"},
        {Step::VideoProperties, "current-frame-on-pause", true, true},
    };
    for (const Echo &echo : echoes) {
        const QString missing = echo.step == Step::Seek ? QString() : m_subject.whyNot(echo.step);
        for (bool whilePlaying : {false, true}) {
            QTest::addRow("%s = %s while %s", echo.name, qPrintable(echo.set.toString()),
                whilePlaying ? "Playing" : "Stopped")
                << missing << QString(echo.name) << echo.set << echo.reported << whilePlaying;
        }
    }
}

void PropertyContract::reportsWhatTookEffect()
{
    QFETCH(QString, missing);
    QFETCH(QString, name);
    QFETCH(QVariant, set);
    QFETCH(QVariant, reported);
    QFETCH(bool, whilePlaying);
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
    if (whilePlaying)
        startPlaylist(makeLongPlaylist(1));
    // With its window a renderer learns that it was chosen, and tells what goes on.
    const bool isChosen = name == KelvoRenderer::PropertyXid;
    if (isChosen)
        heard().expectSameState();
    renderer()->setKelvoProperty(name, set);
    REACHES(heard().property(name).isValid() && heard().states.isEmpty() != isChosen);
    QCOMPARE(heard().property(name), reported);
    QCOMPARE(heard().property(name).typeId(), reported.typeId());
    QCOMPARE(ask(name), reported);
    QCOMPARE(heard().errors.size(), 0);
    QCOMPARE(heard().states.size(), isChosen ? 1 : 0);
}

void PropertyContract::advancesByItselfAtStart()
{
    QCOMPARE(ask("auto-advance"), QVariant(true));
}

void PropertyContract::tellsItsVolume()
{
    NEEDS(Volume);
    const QVariant volume = ask("volume");
    QCOMPARE(volume.typeId(), int(QMetaType::UInt));
    HOLDS(volume.toUInt() <= 99);
}

void PropertyContract::refusesUnknownNames()
{
    renderer()->setKelvoProperty("no such property", 1);
    REACHES(heard().errors.size() == 1);
    QCOMPARE(heard().errors.constFirst().code(), KelvoError::NotSupported);
    settle();
    QCOMPARE(heard().properties.size(), 0);
    QCOMPARE(heard().errors.size(), 1);
}

void PropertyContract::answersUnknownNames()
{
    QCOMPARE(ask("no such property"), QVariant());
    QCOMPARE(ask(QString()), QVariant());
}

void PropertyContract::refusesUnusableValues_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("value");
    struct Unusable
    {
        Step step;
        const char *name;
        QVariant value;
    };
    const QList<Unusable> values{
        {Step::Volume, "volume", QStringLiteral("loud")},
        {Step::Volume, "volume", -1},
        {Step::Volume, "volume", 100},
        {Step::Volume, "volume", QVariant()},
        {Step::RefuseValues, "auto-advance", QStringLiteral("perhaps")},
        {Step::RefuseValues, "auto-advance", QVariant()},
        {Step::RefuseValues, "playback-speed", 0.0},
        {Step::RefuseValues, "playback-speed", QStringLiteral("fast")},
        {Step::RefuseValues, "playback-speed", qQNaN()},
        {Step::VideoProperties, "render-rectangle", QStringLiteral("1,2,3")},
        {Step::VideoProperties, "render-rectangle", QStringLiteral("a,b,c,d")},
        {Step::VideoProperties, "xid", QStringLiteral("window")},
        {Step::VideoProperties, "current-frame-on-pause", QVariantList()},
    };
    for (const auto &[step, name, value] : values)
        QTest::addRow("%s = %s", name, value.isValid() ? qPrintable(value.toString()) : "(invalid)")
            << m_subject.whyNot(step) << QString(name) << value;
}

void PropertyContract::refusesUnusableValues()
{
    NEEDS(RefuseValues);
    QFETCH(QString, missing);
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
    QFETCH(QString, name);
    QFETCH(QVariant, value);
    const QVariant before = ask(name);
    renderer()->setKelvoProperty(name, value);
    REACHES(heard().errors.size() == 1);
    QCOMPARE(heard().errors.constFirst().code(), KelvoError::InvalidValue);
    settle();
    QCOMPARE(heard().properties.size(), 0);
    QCOMPARE(heard().errors.size(), 1);
    QCOMPARE(ask(name), before);
}

void PropertyContract::keepsWhatWasSetFromItemToItem()
{
    NEEDS(Volume);
    renderer()->setKelvoProperty("volume", 17);
    REACHES(heard().property("volume") == QVariant(17U));
    startPlaylist(makeLongPlaylist(2));
    renderer()->next();
    REACHES(isPlaying(1));
    renderer()->stop();
    REACHES(heard().state() == KelvoRenderer::Stopped);
    QCOMPARE(ask("volume"), QVariant(17U));
}
} // namespace

std::unique_ptr<QObject> makePropertyContract(RendererSubject &subject)
{
    return std::make_unique<PropertyContract>(subject);
}

#include "PropertyContract.moc"
