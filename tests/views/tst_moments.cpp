#include "tests/fakes/Suite.h"
#include "tests/views/ChatStage.h"
#include "tests/views/ConversationStage.h"
#include "tests/views/HomeStage.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

/// Plays a moment; what is wrong with what can be seen then.
using Play = std::function<QStringList()>;

/// VYNLEX_PICTURES names a folder for a picture of each moment.
void keepPicture(QQuickWindow &window)
{
    const QString folder = qEnvironmentVariable("VYNLEX_PICTURES");
    if (folder.isEmpty())
        return;
    QTest::qWait(450); // into the middle of a pulse, a wave or a fade
    QVERIFY(window.grabWindow().save(folder + u'/' + QString::fromUtf8(QTest::currentDataTag()) + u".png"_s));
}

template<typename Stage> void addMoments()
{
    for (const DeviceShape &shape : deviceShapes()) {
        for (const Scene<Stage> &moment : Stage::scenes()) {
            const Play look = [&] {
                Stage stage(shape);
                if (!moment.play(stage))
                    return QStringList(u"it did not come about"_s);
                keepPicture(stage.window);
                return stage.probe.faults(shape.safeArea);
            };
            QTest::addRow("%s, %s", qPrintable(moment.name), qPrintable(shape.name)) << look;
        }
    }
}

/// The moments of which two cannot be told apart in a part of the phone's window, by an eye that sees no colours.
template<typename Stage> QStringList lookAlike(const QStringList &moments, const QRect &part)
{
    std::vector<Look> looks;
    for (const QString &moment : moments) {
        Stage stage(deviceShapes().front());
        if (!play(stage, moment))
            return {moment + u" did not come about"_s};
        QTest::qWait(500); // a moment into the movement that is part of a look
        looks.push_back({moment, inGrey(stage.window, part)});
    }
    return lookAlike(looks);
}

} // namespace

class MomentsTest : public QObject {
    Q_OBJECT

private slots:
    void everyMomentIsWithoutFaultOnEveryDevice_data()
    {
        QTest::addColumn<Play>("play");
        addMoments<HomeStage>();
        addMoments<ConversationStage>();
        addMoments<ChatStage>();
    }
    void everyMomentIsWithoutFaultOnEveryDevice()
    {
        QFETCH(const Play, play);
        QTest::failOnWarning(QRegularExpression(u"QML|\\.qml"_s)); // a broken binding, a picture that is missing
        QStringList faults = play();
        faults.removeAll(u"cut off: "_s + longName); // which is allowed
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u"\n"_s)));
    }

    void theStatesAreToldApartWithoutColour()
    {
        QCOMPARE(lookAlike<ConversationStage>({u"fresh"_s, u"speaker-listening"_s, u"being-translated"_s,
                                               u"translated"_s, u"speaker-reading-aloud"_s},
                                              {0, 462, 390, 382}), // the lower half
                 QStringList());
        QCOMPARE(lookAlike<ChatStage>({u"chat-idle"_s, u"chat-recording"_s, u"chat-stopped"_s, u"chat-previewing"_s,
                                       u"chat-sending"_s, u"chat-playing"_s},
                                      {0, 540, 390, 300}), // the end of the list, and the panel
                 QStringList());
    }
};

template struct vynlex::InSuite<MomentsTest>;
#include "tst_moments.moc"
