#include "platform/ui/ButtonState.h"
#include "platform/ui/Color.h"
#include "platform/ui/LabelState.h"
#include "platform/ui/ResourceBundle.h"
#include "platform/ui/RowModel.h"
#include "platform/ui/SpringCurve.h"
#include "tests/fakes/Suite.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;

class tst_controls : public QObject {
    Q_OBJECT

private slots:
    void namesAndColorsThatMeanNothingAreEmpty()
    {
        QCOMPARE(colorFromHex(u"0F3CC9"_s), QColor(0x0F, 0x3C, 0xC9));
        for (const QString &text : {QString(), u"#FFB5B5B5"_s, u"yellow"_s})
            QCOMPARE(colorFromHex(text), QColor());

        QVERIFY(QFile::exists(u':' + ResourceBundle::image(u"micStopButton"_s).path()));
        for (const QString &name : {QString(), u"noSuchImage"_s, u"../../qt-project.org/imports/QtQuick/qmldir"_s})
            QVERIFY(ResourceBundle::image(name).isEmpty());
    }

    void aReloadKeepsTheCellsOfAListOfTheSameLength()
    {
        struct Row {
            QString name;
            bool marked = false;
            bool operator==(const Row &) const = default;
        };
        RowModel<Row> model(
            {{"name", [](const Row &row) { return row.name; }}, {"marked", [](const Row &row) { return row.marked; }}});
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

        model.setRows({{u"one"_s, true}, {u"two"_s}, {u"three"_s}});
        QCOMPARE(reset.count(), 1);
        model.setRows({{u"one"_s}, {u"two"_s}, {u"three"_s, true}});
        QCOMPARE(reset.count(), 1);
        QCOMPARE(changed.count(), 2);
        QCOMPARE(changed.at(1).at(0).toModelIndex().row(), 2);

        const int marked = model.roleNames().key("marked");
        QCOMPARE(model.data(model.index(2), marked), true);
        QVERIFY(!model.data(model.index(2), marked + 1).isValid());
        QVERIFY(!model.data({}, marked).isValid());

        model.setRows({});
        QCOMPARE(reset.count(), 2);
        QCOMPARE(model.rowCount(), 0);
    }

    void theSpringOvershootsAndSettles()
    {
        QCOMPARE(spring::position(0), 0.0);
        QCOMPARE(spring::position(1), 1.0);
        double highest = 0;
        double largestStep = 0;
        for (int frame = 1; frame <= 100; ++frame) {
            const double position = spring::position(frame / 100.0);
            highest = std::max(highest, position);
            largestStep = std::max(largestStep, std::abs(position - spring::position((frame - 1) / 100.0)));
        }
        // A ratio of 0.7 goes about 4.6 % too far, and no frame jumps, the last one included.
        QVERIFY(highest > 1.03 && highest < 1.06);
        QVERIFY(largestStep < 0.06);
        QCOMPARE(spring::curve().valueForProgress(0.3), spring::position(0.3));
    }
};

template struct vynlex::InSuite<tst_controls>;

#include "tst_controls.moc"
