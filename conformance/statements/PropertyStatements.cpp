// SPDX-License-Identifier: MIT
#include "StatementGroups.h"
#include "Trial.h"

#include <QtNumeric>

namespace {
class PropertyStatements : public Trial
{
public:
    using Trial::Trial;

    void reportsWhatTookEffect(
        const QString &name, const QVariant &set, const QVariant &reported, bool whilePlaying);
    void advancesByItselfAtStart();
    void tellsItsVolume();
    void refusesUnknownNames();
    void answersUnknownNames();
    void refusesUnusableValues(const QString &name, const QVariant &value);
    void keepsWhatWasSetFromItemToItem();

private:
    QVariant ask(const QString &name);
};

QVariant PropertyStatements::ask(const QString &name)
{
    const qsizetype before = heard().propertyAnswers.size();
    renderer()->kelvoProperty(name, m_probe.get(), "propertyAnswer(QString,QVariant)");
    if (!reaches([&] { return heard().propertyAnswers.size() > before; }))
        return QStringLiteral("no answer");
    const auto answer = heard().propertyAnswers.constLast();
    return answer.first == name ? answer.second : QStringLiteral("answered as ") + answer.first;
}

void PropertyStatements::reportsWhatTookEffect(
    const QString &name, const QVariant &set, const QVariant &reported, bool whilePlaying)
{
    if (whilePlaying)
        startPlaylist(makeLongPlaylist(1));
    // With its window a renderer learns that it was chosen, and tells what goes on.
    const bool isChosen = name == KelvoRenderer::PropertyXid;
    if (isChosen)
        heard().expectSameState();
    renderer()->setKelvoProperty(name, set);
    REACHES(heard().property(name).isValid() && heard().states.isEmpty() != isChosen);
    SAME(heard().property(name), reported);
    SAME(heard().property(name).typeId(), reported.typeId());
    SAME(ask(name), reported);
    SAME(heard().errors.size(), 0);
    SAME(heard().states.size(), isChosen ? 1 : 0);
}

void PropertyStatements::advancesByItselfAtStart()
{
    SAME(ask("auto-advance"), QVariant(true));
}

void PropertyStatements::tellsItsVolume()
{
    const QVariant volume = ask("volume");
    SAME(volume.typeId(), int(QMetaType::UInt));
    HOLDS(volume.toUInt() <= 99);
}

void PropertyStatements::refusesUnknownNames()
{
    renderer()->setKelvoProperty("no such property", 1);
    REACHES(heard().errors.size() == 1);
    SAME(heard().errors.constFirst().code(), KelvoError::NotSupported);
    settle();
    SAME(heard().properties.size(), 0);
    SAME(heard().errors.size(), 1);
}

void PropertyStatements::answersUnknownNames()
{
    SAME(ask("no such property"), QVariant());
    SAME(ask(QString()), QVariant());
}

void PropertyStatements::refusesUnusableValues(const QString &name, const QVariant &value)
{
    const QVariant before = ask(name);
    renderer()->setKelvoProperty(name, value);
    REACHES(heard().errors.size() == 1);
    SAME(heard().errors.constFirst().code(), KelvoError::InvalidValue);
    settle();
    SAME(heard().properties.size(), 0);
    SAME(heard().errors.size(), 1);
    SAME(ask(name), before);
}

void PropertyStatements::keepsWhatWasSetFromItemToItem()
{
    renderer()->setKelvoProperty("volume", 17);
    REACHES(heard().property("volume") == QVariant(17U));
    startPlaylist(makeLongPlaylist(2));
    renderer()->next();
    REACHES(isPlaying(1));
    renderer()->stop();
    REACHES(heard().state() == KelvoRenderer::Stopped);
    SAME(ask("volume"), QVariant(17U));
}

/// "volume = 42"; what is no text is named.
QString assignment(const QString &name, const QVariant &value)
{
    QString text = value.toString();
    if (!value.isValid())
        text = QStringLiteral("no value");
    else if (text.isEmpty())
        text = QStringLiteral("a list");
    return QStringLiteral("%1 = %2").arg(name, text);
}

QList<Statement> echoStatements()
{
    struct Echo
    {
        QList<Ability> needs;
        QString name;
        QVariant set;
        QVariant reported;
    };
    const QList<Echo> echoes{
        {{}, "auto-advance", false, false},
        {{Ability::Volume}, "volume", 0, 0U},
        {{Ability::Volume}, "volume", 42, 42U},
        {{Ability::Volume}, "volume", 99, 99U},
        {{Ability::VideoProperties}, "xid", 0U, 0U},
        {{Ability::VideoProperties}, "autopaint", false, false},
        {{Ability::VideoProperties}, "render-rectangle", "517,84,320,240", "517,84,320,240"},
        {{Ability::VideoProperties}, "current-frame-on-pause", true, true},
    };
    QList<Statement> all;
    for (const Echo &echo : echoes) {
        for (bool whilePlaying : {false, true}) {
            const QString state = valueText(whilePlaying ? Playing : Stopped);
            const QString what = assignment(echo.name, echo.set);
            all.append(
                statement(rowId("property.takes-effect", QStringLiteral("%1 while %2").arg(what, state)),
                    QStringLiteral("Setting %1 while %2 is reported, and answered from then on.")
                        .arg(what, state),
                    echo.needs, &PropertyStatements::reportsWhatTookEffect, echo.name, echo.set,
                    echo.reported, whilePlaying));
        }
    }
    return all;
}

QList<Statement> unusableStatements()
{
    struct Unusable
    {
        QList<Ability> needs;
        QString name;
        QVariant value;
        QString row;
    };
    const Ability refuse = Ability::RefuseValues;
    const QList<Unusable> values{
        {{refuse, Ability::Volume}, "volume", "loud", "volume-text"},
        {{refuse, Ability::Volume}, "volume", -1, "volume-below-0"},
        {{refuse, Ability::Volume}, "volume", 100, "volume-above-99"},
        {{refuse, Ability::Volume}, "volume", QVariant(), "volume-no-value"},
        {{refuse}, "auto-advance", "perhaps", "auto-advance-text"},
        {{refuse}, "auto-advance", QVariant(), "auto-advance-no-value"},
        {{refuse}, "playback-speed", 0.0, "playback-speed-0"},
        {{refuse}, "playback-speed", "fast", "playback-speed-text"},
        {{refuse}, "playback-speed", qQNaN(), "playback-speed-no-number"},
        {{refuse, Ability::VideoProperties}, "render-rectangle", "1,2,3", "render-rectangle-of-three"},
        {{refuse, Ability::VideoProperties}, "render-rectangle", "a,b,c,d", "render-rectangle-of-letters"},
        {{refuse, Ability::VideoProperties}, "xid", "window", "xid-text"},
        {{refuse, Ability::VideoProperties}, "current-frame-on-pause", QVariantList(),
            "current-frame-on-pause-list"},
    };
    QList<Statement> all;
    for (const auto &[needs, name, value, row] : values) {
        all.append(statement(QLatin1String("property.unusable.") + row,
            QStringLiteral("Setting %1 gives error InvalidValue and changes nothing.")
                .arg(assignment(name, value)),
            needs, &PropertyStatements::refusesUnusableValues, name, value));
    }
    return all;
}
} // namespace

QList<Statement> propertyStatements()
{
    using G = PropertyStatements;
    return echoStatements()
        + QList<Statement>{
            statement("property.auto-advance-at-start", "A renderer that has just come advances by itself.", {},
                &G::advancesByItselfAtStart),
            statement("property.volume-is-told", "The volume is answered as a number from 0 to 99.",
                {Ability::Volume}, &G::tellsItsVolume),
            statement("property.unknown-is-refused",
                "Setting a property that there is not gives error NotSupported and reports nothing.", {},
                &G::refusesUnknownNames),
            statement("property.unknown-is-answered",
                "Asking for a property that there is not is answered, with no value.", {},
                &G::answersUnknownNames),
        }
        + unusableStatements()
        + QList<Statement>{
            statement("property.kept-from-item-to-item", "The volume that was set stays from item to item.",
                {Ability::Volume}, &G::keepsWhatWasSetFromItemToItem),
        };
}
