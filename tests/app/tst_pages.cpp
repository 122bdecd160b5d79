#include "tests/support/stage.h"

#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QPlainTextEdit>
#include <QTest>

using namespace Qt::StringLiterals;

/// One text for a widget: its class, then its caption or else its object name.
static QString describe(const QWidget *widget)
{
    QString text = QString::fromLatin1(widget->metaObject()->className());
    if (const auto *button = qobject_cast<const QPushButton *>(widget))
        text += u' ' + button->text();
    else if (const auto *label = qobject_cast<const QLabel *>(widget))
        text += u' ' + label->text();
    else if (const auto *group = qobject_cast<const QGroupBox *>(widget))
        text += u' ' + group->title();
    else if (!widget->objectName().isEmpty())
        text += u' ' + widget->objectName();
    return text;
}

/// The items of a layout in their order, with those of inner layouts behind the layout's class.
static QStringList describe(const QLayout *layout)
{
    QStringList all;
    for (int index = 0; index < layout->count(); ++index) {
        QLayoutItem *item = layout->itemAt(index);
        if (item->widget() != nullptr)
            all.append(describe(item->widget()));
        else if (item->layout() != nullptr)
            all << QString::fromLatin1(item->layout()->metaObject()->className()) << describe(item->layout())
                << u"end"_s;
        else
            all.append(item->expandingDirections().testFlag(Qt::Horizontal) ? u"stretch"_s : u"space"_s);
    }
    return all;
}

class TestPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void page_is_laid_out_from_top_to_bottom_data()
    {
        QTest::addColumn<QStringList>("items");
        QTest::addRow("Digital Twins") << QStringList{
            u"QComboBox tagFilter"_s, u"QTableWidget personaTable"_s, u"QHBoxLayout"_s, u"QPushButton New"_s,
            u"QPushButton Copy"_s,    u"QPushButton Delete"_s,        u"stretch"_s,     u"end"_s};
        QTest::addRow("Boilerplate") << QStringList{u"QLabel Preamble (before persona)"_s,
                                                    u"QPlainTextEdit preambleEdit"_s,
                                                    u"QLabel Postamble (after persona, before question)"_s,
                                                    u"QPlainTextEdit postambleEdit"_s, u"QGroupBox Conversation"_s};
        QTest::addRow("Questions") << QStringList{
            u"QTableView questionView"_s, u"QHBoxLayout"_s,      u"QPushButton Add"_s, u"QPushButton Delete"_s,
            u"QPushButton Up"_s,          u"QPushButton Down"_s, u"stretch"_s,         u"end"_s};
        QTest::addRow("Results") << QStringList{u"QTableWidget resultsTable"_s, u"QPushButton Run Survey"_s};
    }

    void page_is_laid_out_from_top_to_bottom()
    {
        QFETCH(QStringList, items);
        Stage stage;
        const QWidget *page = stage.page(QString::fromLatin1(QTest::currentDataTag()));
        QVERIFY(page != nullptr);
        QCOMPARE(page->metaObject(), &QWidget::staticMetaObject);
        QVERIFY(page->layout() != nullptr);
        QCOMPARE(QLatin1StringView(page->layout()->metaObject()->className()), "QVBoxLayout"_L1);
        QCOMPARE(describe(page->layout()), items);
    }

    void conversation_box_has_its_choosers_above_its_text()
    {
        Stage stage;
        const auto *group = stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>();
        QVERIFY(group != nullptr);
        QCOMPARE(group->title(), u"Conversation"_s);
        QCOMPARE(QLatin1StringView(group->layout()->metaObject()->className()), "QVBoxLayout"_L1);
        const QStringList expected = {u"QHBoxLayout"_s,      u"QComboBox"_s, u"QComboBox"_s,
                                      u"QPushButton Show"_s, u"end"_s,       u"QPlainTextEdit"_s};
        QCOMPARE(describe(group->layout()), expected);
    }

    void conversation_is_for_reading_alone()
    {
        Stage stage;
        const auto *group = stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>();
        QVERIFY(group->findChild<QPlainTextEdit *>()->isReadOnly());
        QVERIFY(!stage.find<QPlainTextEdit>(u"preambleEdit"_s)->isReadOnly());
        QVERIFY(!stage.find<QPlainTextEdit>(u"postambleEdit"_s)->isReadOnly());
    }

    void boilerplate_edits_keep_a_minimum_height()
    {
        Stage stage;
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->minimumHeight(), 80);
        QCOMPARE(stage.find<QPlainTextEdit>(u"postambleEdit"_s)->minimumHeight(), 80);
    }

    void marketplace_is_a_centred_label_and_no_more()
    {
        Stage stage;
        const auto *label = qobject_cast<QLabel *>(stage.page(u"Marketplace"_s));
        QVERIFY(label != nullptr);
        QCOMPARE(label->text(), u"Marketplace coming soon"_s);
        QCOMPARE(label->alignment(), Qt::AlignCenter);
        QVERIFY(label->layout() == nullptr);
        QVERIFY(label->findChildren<QWidget *>().isEmpty());
    }

    void window_has_no_other_buttons()
    {
        Stage stage;
        QStringList texts;
        for (const auto all = stage.window()->findChildren<QPushButton *>(); const QPushButton *button : all)
            texts.append(button->text());
        texts.sort();
        const QStringList expected = {u"Add"_s, u"Copy"_s,       u"Delete"_s, u"Delete"_s, u"Down"_s,
                                      u"New"_s, u"Run Survey"_s, u"Show"_s,   u"Up"_s};
        QCOMPARE(texts, expected);
    }
};

QTEST_MAIN(TestPages)
#include "tst_pages.moc"
