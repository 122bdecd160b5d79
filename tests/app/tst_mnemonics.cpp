#include "tests/support/patience.h"
#include "tests/support/stage.h"
#include "tests/support/testcase.h"

#include <QApplication>
#include <QMenu>
#include <QWindow>

using namespace Qt::StringLiterals;

class TestMnemonics : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void alt_and_its_letter_open_a_menu_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<QStringList>("menus");
        QTest::addRow("Alt+F") << Qt::Key_F << QStringList(u"&File"_s);
        QTest::addRow("Alt+V") << Qt::Key_V << QStringList(u"&View"_s);
        QTest::addRow("Alt+H") << Qt::Key_H << QStringList(u"&Help"_s);
        // Two menus share a letter, which goes on from the one to the other.
        QTest::addRow("Alt+S") << Qt::Key_S << QStringList{u"&Settings"_s, u"&Survey"_s};
    }

    void alt_and_its_letter_open_a_menu()
    {
        QFETCH(Qt::Key, key);
        QFETCH(QStringList, menus);
        Stage stage;
        stage.window()->show();
        QVERIFY(QTest::qWaitForWindowActive(stage.window(), patience));
        QVERIFY(QApplication::activePopupWidget() == nullptr);
        QStringList opened;
        for (qsizetype turn = 0; turn < menus.size(); ++turn) {
            // Where a keyboard's keys come in: an open menu takes them before the window does.
            QTest::keyClick(stage.window()->windowHandle(), key, Qt::AltModifier);
            const auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            opened.append(menu != nullptr ? menu->title() : QString());
        }
        QCOMPARE(opened, menus);
        QApplication::activePopupWidget()->close();
    }
};

ORRINET_TEST(TestMnemonics)
#include "tst_mnemonics.moc"
