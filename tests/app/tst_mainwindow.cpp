#include "tests/support/stage.h"

#include <QTest>

class TestMainWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void slots_stand_in_the_order_of_the_interface()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", QString(QLatin1StringView("A")), QString(QLatin1StringView("B"))));
        QCOMPARE(stage.value(QStringLiteral("SELECT COUNT(*) FROM personas")).toInt(), 1);
        QVERIFY(stage.asksBeforeClosing());
        stage.call("newProject");
        QVERIFY(!stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
