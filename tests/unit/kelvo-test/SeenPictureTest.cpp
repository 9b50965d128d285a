// SPDX-License-Identifier: MIT
#include "SeenPicture.h"
#include "EyeCondition.h"
#include "HeardSound.h"
#include "KelvoTestCase.h"
#include "PictureFollower.h"
#include "TestGroup.h"

#include <QStringList>
#include <QTest>

#include <cmath>
#include <functional>

namespace {
using Moment = MediaClock::Moment;
/// What a renderer shows at a time; item 0: nothing.
using Renderer = std::function<Moment(double)>;

PictureFollower::Look lookAt(double at, std::vector<FrameMark> marks, const QString &doubt = {})
{
    return {at, 0.001, std::move(marks), doubt};
}

/// All that is told of a renderer that is looked at a hundred times a second.
std::vector<Sighting> watch(const Renderer &renderer, double seconds)
{
    PictureFollower follower;
    std::vector<Sighting> told;
    for (int i = 0; i < seconds * 100; ++i) {
        const double at = 100 + i * 0.01;
        const Moment moment = renderer(i * 0.01);
        std::vector<FrameMark> marks;
        if (moment.item > 0)
            marks.push_back({moment, 0, 0, 16, 16});
        for (const Sighting &sighting : follower.take(lookAt(at, marks)))
            told.push_back(sighting);
    }
    return told;
}

QString kindsOf(const std::vector<Sighting> &told)
{
    QStringList words;
    for (const Sighting &sighting : told) {
        if (sighting.kind != Sighting::Goes)
            words.append(sighting.kindText());
    }
    return words.join(u' ');
}

SeenPicture pictureOf(const std::vector<Sighting> &told, double now)
{
    SeenPicture seen;
    for (const Sighting &sighting : told)
        seen.take(sighting);
    seen.settle(now);
    return seen;
}

qint64 frameAt(double seconds)
{
    return qint64(std::floor(seconds * MediaClock::framesPerSecond + 1e-6));
}

HeardSound soundAt(double at, int item, double position)
{
    Hearing hearing;
    hearing.at = at;
    hearing.item = item;
    hearing.position = position;
    HeardSound sound;
    sound.take(hearing);
    sound.settle(at);
    return sound;
}

bool isNear(const std::optional<Measured> &measured, double wanted)
{
    return measured && std::abs(measured->value - wanted) <= measured->error;
}
} // namespace

/// What is known of pictures that were seen, of renderers that are right, and of those that are wrong on purpose.
class SeenPictureTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void aPictureThatGoesOn()
    {
        const auto told = watch([](double t) { return Moment{3, frameAt(t + 5)}; }, 3);
        QCOMPARE(kindsOf(told), QStringLiteral("begins"));
        const SeenPicture seen = pictureOf(told, 103);
        QVERIFY(isNear(seen.position(), 8) && isNear(seen.frame(), 200));
        QVERIFY(seen.goes() && !seen.rests() && seen.item() == 3 && seen.leftOut() == 0);
        QVERIFY(seen.position()->error < 0.03);
        QVERIFY(std::abs(told.back().speed - 1) < 0.02);
        EyeCondition condition;
        condition.item = 3;
        condition.frame = {200, 1};
        condition.position = {8, 0};
        QVERIFY(condition.holds(seen, {}, false) && condition.unmeasured(seen, {}).isEmpty());
        // One that says that it is paused, and plays on.
        QVERIFY(!condition.holds(seen, {}, true));
        condition.item = 4;
        QVERIFY(!condition.holds(seen, {}, false));
        condition.item = 3;
        condition.position = {7.9, 0.05};
        QVERIFY(!condition.holds(seen, {}, false));
    }

    void aPictureThatRests()
    {
        const auto told = watch([](double t) { return Moment{3, frameAt(std::min(t, 1.0) + 5)}; }, 3);
        QCOMPARE(kindsOf(told), QStringLiteral("begins rests"));
        const SeenPicture seen = pictureOf(told, 110);
        QVERIFY(seen.rests() && std::abs(told.back().at - 101) <= told.back().within + 0.001);
        QCOMPARE(seen.frame()->value, 150.0);
        QCOMPARE(seen.frame()->error, 0.0);
        EyeCondition condition;
        condition.frame = {150, 0};
        QVERIFY(condition.holds(seen, {}, true));
        condition.frame = {151, 0};
        QVERIFY(!condition.holds(seen, {}, true));
        QVERIFY(condition.unmeasured(seen, {}).isEmpty());
    }

    void jumpsAndOtherItemsAreTold()
    {
        const auto seeking = watch([](double t) { return Moment{3, frameAt(t < 1 ? t : t + 20)}; }, 2);
        QCOMPARE(kindsOf(seeking), QStringLiteral("begins jumps"));
        const auto back = watch([](double t) { return Moment{3, frameAt(t < 1 ? t + 20 : t)}; }, 2);
        QCOMPARE(kindsOf(back), QStringLiteral("begins jumps"));
        const auto next = watch([](double t) { return Moment{t < 1 ? 3 : 4, frameAt(t)}; }, 2);
        QCOMPARE(kindsOf(next), QStringLiteral("begins jumps"));
        QCOMPARE(pictureOf(next, 102).item(), 4);
    }

    void picturesThatAreLeftOutAreCounted()
    {
        // Every tenth is none.
        const auto told = watch(
            [](double t) {
                const qint64 frame = frameAt(t);
                return Moment{3, frame % 10 == 5 ? frame - 1 : frame};
            },
            4.15);
        QCOMPARE(kindsOf(told), QStringLiteral("begins"));
        QVERIFY2(std::abs(pictureOf(told, 104).leftOut() - 10) <= 1,
            qPrintable(QString::number(pictureOf(told, 104).leftOut())));
    }

    void onePictureThatIsLateSaysNothing()
    {
        // Every tenth is shown 30 ms late.
        const auto told = watch(
            [](double t) {
                const bool isLate = frameAt(t) % 10 == 5 && t * 25 - double(frameAt(t)) < 0.74;
                return Moment{3, frameAt(t) - (isLate ? 1 : 0)};
            },
            4);
        for (const Sighting &sighting : told)
            QVERIFY(std::abs(sighting.at - 100 - sighting.moment.seconds()) < 0.011);
    }

    void twiceAsFastIsToldAsSuch()
    {
        const auto told = watch([](double t) { return Moment{3, frameAt(2 * t)}; }, 3);
        QCOMPARE(kindsOf(told), QStringLiteral("begins"));
        QVERIFY(std::abs(told.back().speed - 2) < 0.04);
    }

    void nothingIsGuessed()
    {
        PictureFollower follower;
        const FrameMark mark{{3, 75}, 0, 0, 16, 16};
        QCOMPARE(follower.take(lookAt(1, {mark})).size(), size_t(1));
        // One picture after the other: for a moment neither can be read.
        QVERIFY(follower.take(lookAt(1.02, {{}})).empty());
        QVERIFY(follower.take(lookAt(1.04, {mark})).empty());
        const QList<std::pair<PictureFollower::Look, QString>> cases{
            {lookAt(0, {}), QStringLiteral("no picture with a mark")},
            {lookAt(0, {mark, mark}), QStringLiteral("2 pictures with a mark")},
            {lookAt(0, {FrameMark{}}), QStringLiteral("cannot be read")},
            {lookAt(0, {mark}, QStringLiteral("it is covered")), QStringLiteral("covered")}};
        double at = 2;
        for (auto [look, doubt] : cases) {
            std::vector<Sighting> told;
            for (int i = 0; i < 60; ++i) {
                look.at = at += 0.01;
                for (const Sighting &sighting : follower.take(look))
                    told.push_back(sighting);
            }
            QCOMPARE(told.size(), size_t(1));
            QCOMPARE(told.front().kind, Sighting::Ends);
            QVERIFY2(told.front().doubt.contains(doubt), qPrintable(told.front().doubt));
            const SeenPicture seen = pictureOf(told, at);
            EyeCondition condition;
            condition.item = 3;
            QVERIFY(!condition.holds(seen, {}, false));
            QCOMPARE(condition.unmeasured(seen, {}), told.front().doubt);
        }
        EyeCondition any;
        any.item = 1;
        QVERIFY(any.unmeasured({}, {}).contains(QLatin1String("nobody looks")));
    }

    void pictureAgainstSound()
    {
        const auto told = watch([](double t) { return Moment{3, frameAt(t + 5)}; }, 3);
        const SeenPicture seen = pictureOf(told, 103);
        EyeCondition condition;
        condition.sync = {0, 0.04};
        QVERIFY(condition.holds(seen, soundAt(103, 3, 8), false));
        QVERIFY(condition.measured(seen, soundAt(103, 3, 8)).contains(QStringLiteral("(± ")));
        // A renderer whose sound is late, one whose sound is early, and one that plays the sound of another item.
        QVERIFY(!condition.holds(seen, soundAt(103, 3, 7.8), false));
        QVERIFY(!condition.holds(seen, soundAt(103, 3, 8.2), false));
        QVERIFY(!condition.holds(seen, soundAt(103, 4, 8), false));
        QVERIFY(condition.unmeasured(seen, soundAt(103, 4, 8)).isEmpty());
        QVERIFY(!condition.holds(seen, {}, false));
        QVERIFY(!condition.unmeasured(seen, {}).isEmpty());
    }

    void whatIsToldIsReadAgain()
    {
        Sighting told;
        told.kind = Sighting::Jumps;
        told.at = 73294.679761;
        told.within = 0.006;
        told.moment = {7, 137};
        told.leftOut = 2;
        told.speed = 1.5;
        const std::optional<Sighting> read = Sighting::ofLine(told.line());
        QVERIFY(read.has_value());
        QCOMPARE(read->line(), told.line());
        QVERIFY(read->moment == told.moment && read->leftOut == 2 && read->kind == Sighting::Jumps);
        for (const char *line : {"", "looking 7\n", "{}", R"({"kind":"sees","at":1})", R"({"kind":"goes"})"})
            QVERIFY(!Sighting::ofLine(line));
    }
};

KELVO_TEST(SeenPictureTest)
#include "SeenPictureTest.moc"
