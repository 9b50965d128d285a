// SPDX-License-Identifier: MIT
#pragma once

#include "Dice.h"
#include "KelvoAnswer.h"
#include "KelvoRenderer.h"

#include <QList>

#include <optional>

/// A renderer that keeps to nothing: it says what no renderer may, inside of commands too, answers questions wrongly,
/// twice, late or never, and does not do what it is told.
///
/// What it never says is what the boundary takes for granted: an empty list of values, a policy override that is no
/// bool.
class LyingRenderer : public KelvoRenderer
{
    Q_OBJECT
public:
    LyingRenderer(QString uuid, QString name, quint64 seed);

    /// From now on it neither answers nor says anything.
    void hang() { m_hangs = true; }
    void lie();
    void answerLate();

    QString uuid() const override { return m_uuid; }
    QString name() const override { return m_name; }
    void play() override { onCommand(); }
    void playUri(const QUrl &) override { onCommand(); }
    void playUriWithType(const QUrl &, const QString &) override { onCommand(); }
    void stop() override { onCommand(); }
    void pause() override { onCommand(); }
    void resume() override { onCommand(); }
    void next() override { onCommand(); }
    void previous() override { onCommand(); }
    void pauseAt(uint) override { onCommand(); }
    void gotoIndex(uint) override { onCommand(); }
    void setPosition(int, int) override { onCommand(); }
    void getStatus(QObject *receiver, const char *slot) override;
    void getPosition(QObject *receiver, const char *slot) override;
    void assignPlaylist(KelvoPlaylist *) override { }
    void setKelvoProperty(const QString &name, const QVariant &value) override;
    void kelvoProperty(const QString &name, QObject *receiver, const char *slot) override;

private:
    void onCommand();
    void give(const KelvoAnswer &answer, const QVariantList &values);
    void lieAboutFacts();
    void lieAboutProperties();

    struct Late
    {
        KelvoAnswer answer;
        QVariantList values;
    };

    const QString m_uuid;
    QString m_name;
    Dice m_dice;
    bool m_hangs = false;
    bool m_inLie = false;
    QList<Late> m_late;
};
