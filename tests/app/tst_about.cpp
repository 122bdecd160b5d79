#include "tests/support/modal.h"
#include "tests/support/stage.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QLocale>
#include <QTimeZone>

using namespace Qt::StringLiterals;

namespace {

/// What stands in a box, which is gone by now.
struct AboutBox
{
    QString title;
    QStringList lines;
    QWidget *parent = nullptr;
    bool modal = false;
    QMessageBox::StandardButtons buttons;
};

/// Chooses "About" and dismisses the box.
AboutBox about(Stage &stage)
{
    AboutBox seen;
    const Modal modal([&seen](QWidget *window) {
        const auto *box = qobject_cast<QMessageBox *>(window);
        seen = {box->windowTitle(), box->text().split(u'\n'), box->parentWidget(), box->isModal(),
                box->standardButtons()};
        answerBox(window, QMessageBox::Ok);
    });
    stage.action(u"About"_s)->trigger();
    return seen;
}

} // namespace

class TestAbout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void box_names_product_version_and_build_data()
    {
        QTest::addColumn<bool>("testMode");
        QTest::addRow("plain") << false;
        QTest::addRow("test mode") << true;
    }

    void box_names_product_version_and_build()
    {
        QFETCH(bool, testMode);
        Stage stage;
        Stage::setTestMode(testMode);
        const AboutBox box = about(stage);
        QCOMPARE(box.title, u"About Orrinet"_s);
        QCOMPARE(box.parent, stage.window());
        QVERIFY(box.modal);
        QCOMPARE(box.buttons, QMessageBox::Ok);
        QCOMPARE(box.lines.size(), 3);
        QCOMPARE(box.lines.first(2), (QStringList{u"Orrinet"_s, u"Version 0.1.71"_s}));
        QVERIFY2(box.lines.at(2).startsWith("Compiled on "_L1), qPrintable(box.lines.at(2)));
    }

    void build_stamp_is_date_and_time_of_the_compiler()
    {
        Stage stage;
        const QStringList lines = about(stage).lines;
        QCOMPARE(lines.size(), 3);
        // The compiler pads a day of one digit with a blank.
        const QString stamp = lines.at(2).mid(12).replace("  "_L1, " "_L1);
        const QDateTime compiled = QLocale::c().toDateTime(stamp, u"MMM d yyyy HH:mm:ss"_s);
        QVERIFY2(compiled.isValid(), qPrintable(stamp));
        // The compiler may have stood in another zone; the easternmost is 14 hours ahead of UTC.
        const QDateTime earliest(compiled.date(), compiled.time(), QTimeZone(14 * 3600));
        QCOMPARE_LE(earliest, QDateTime::currentDateTimeUtc());
        QCOMPARE(about(stage).lines, lines);
    }

    void box_needs_no_project_and_leaves_none_changed()
    {
        Stage stage;
        stage.database().close();
        QCOMPARE(about(stage).lines.value(1), u"Version 0.1.71"_s);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void without_its_resource_the_version_is_empty()
    {
        Stage stage;
        stage.window();
        Q_CLEANUP_RESOURCE(orrinet);
        const AboutBox box = about(stage);
        Q_INIT_RESOURCE(orrinet);
        QCOMPARE(box.lines.size(), 3);
        QCOMPARE(box.lines.first(2), (QStringList{u"Orrinet"_s, u"Version "_s}));
        QVERIFY(box.lines.at(2).startsWith("Compiled on "_L1));
    }
};

ORRINET_TEST(TestAbout)
#include "tst_about.moc"
