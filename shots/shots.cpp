#include "shots/shots.h"

#include "inspect/chatlogwindow.h"
#include "shots/picture.h"
#include "shots/studio.h"

#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTextBlock>

using namespace Qt::StringLiterals;

// --- the tabs --------------------------------------------------------------------------------------------------

static constexpr QSize tabSize(960, 560);

/// As somebody leaves a table who has dragged the edges of its columns and rows.
static void widen(QTableView *table, const QList<int> &columns, int rowHeight)
{
    for (int column = 0; column < columns.size(); ++column) {
        if (columns.at(column) > 0)
            table->setColumnWidth(column, columns.at(column));
    }
    for (int row = 0; row < table->model()->rowCount(); ++row)
        table->setRowHeight(row, rowHeight);
}

static QImage digitalTwins(Studio &studio)
{
    widen(studio.window()->findChild<QTableView *>(u"personaTable"_s), {140, 75, 200, 480}, 62);
    return studio.tabPicture(u"Digital Twins"_s, tabSize);
}

static QImage questions(Studio &studio)
{
    auto *view = studio.window()->findChild<QTableView *>(u"questionView"_s);
    widen(view, {}, 30);
    const auto columnOf = [view](const QString &field) {
        int column = 0;
        while (view->model()->headerData(column, Qt::Horizontal).toString() != field)
            ++column;
        return column;
    };
    for (const auto &[field, width] : {std::pair(u"order_num"_s, 75), std::pair(u"prompt"_s, 290),
                                       std::pair(u"labels"_s, 120), std::pair(u"reasoning_required"_s, 130)})
        view->setColumnWidth(columnOf(field), width);
    return studio.tabPicture(u"Questions"_s, {960, 440});
}

static QImage marketplace(Studio &studio)
{
    return studio.tabPicture(u"Marketplace"_s, {960, 440});
}

static QImage boilerplate(Studio &studio)
{
    studio.runSurvey();
    const QWidget *page = studio.openTab(u"Boilerplate"_s);
    const auto *group = page->findChild<QGroupBox *>();
    const auto choosers = group->findChildren<QComboBox *>();
    choosers.at(0)->setCurrentText(u"Tilda Teapot"_s);
    choosers.at(1)->setCurrentText(u"2"_s);
    group->findChild<QPushButton *>()->click();
    return studio.tabPicture(u"Boilerplate"_s, {960, 760});
}

static QImage results(Studio &studio)
{
    studio.runSurvey();
    return studio.tabPicture(u"Results"_s, {1280, 500});
}

// --- the dialogs -----------------------------------------------------------------------------------------------

static QImage persona(Studio &studio)
{
    return Studio::dialogPicture([&] { studio.call("editPersona", studio.rowOf(u"Tilda Teapot"_s), 0); }, {560, 330});
}

static QImage optionQuestion(Studio &studio)
{
    return Studio::dialogPicture([&] { studio.call("editQuestion", 0); }, {560, 560});
}

static QImage scaleQuestion(Studio &studio)
{
    return Studio::dialogPicture([&] { studio.call("editQuestion", 4); }, {560, 560});
}

static QImage label(Studio &studio)
{
    QImage picture;
    const auto addLabel = [&picture](QWidget *dialog) {
        picture = Studio::dialogPicture([dialog] { buttonOf(dialog, u"Add"_s)->click(); }, {260, 100},
                                        [](QWidget *box) { box->findChild<QLineEdit *>()->setText(u"Rooibos"_s); });
    };
    Studio::dialogPicture([&] { studio.call("editQuestion", 0); }, {560, 560}, addLabel);
    return picture;
}

static QImage preferences(Studio &studio)
{
    return Studio::dialogPicture([&] { studio.call("showPreferences"); }, {420, 140});
}

static QImage importPack(Studio &studio)
{
    const QString pack = studio.path(u"panel.ornk"_s);
    bool exported = false;
    QMetaObject::invokeMethod(studio.window(), "exportPackToFile", Qt::DirectConnection, qReturnArg(exported), pack);
    return exported ? Studio::dialogPicture([&] { studio.call("importPack", pack); }, {410, 110}) : QImage();
}

static QImage discard(Studio &studio)
{
    studio.window()->markDirty();
    const auto open = [&studio] {
        bool opened = false;
        QMetaObject::invokeMethod(studio.window(), "openProjectFromFile", Qt::DirectConnection, qReturnArg(opened),
                                  studio.path(u"none"_s));
    };
    return Studio::dialogPicture(open, {410, 110});
}

static QImage quit(Studio &studio)
{
    studio.window()->markDirty();
    return Studio::dialogPicture([&] { studio.window()->close(); }, {370, 110});
}

/// With a time of compiling that is not another in each build.
static QImage about(Studio &studio)
{
    return Studio::dialogPicture([&] { studio.call("showAbout"); }, {300, 110},
                                 [](QWidget *dialog) {
                                     auto *box = qobject_cast<QMessageBox *>(dialog);
                                     box->setText(box->text().section(u'\n', 0, 1) +
                                                  "\nCompiled on Nov  2 2026 18:00:00"_L1);
                                 });
}

/// The four entries of the first text question, which are short: its messages, the request, the reply, the answer.
static QImage log(Studio &studio)
{
    static constexpr QSize size(960, 780);
    studio.runSurvey();
    auto *window = studio.window()->findChild<ChatLogWindow *>();
    window->resize(size);
    QCoreApplication::processEvents();
    auto *view = window->findChild<QPlainTextEdit *>();
    int exchange = 0;
    for (QTextBlock block = view->document()->begin(); block.isValid(); block = block.next()) {
        if (block.text().startsWith("-> ["_L1) && ++exchange == 3)
            view->verticalScrollBar()->setValue(block.firstLineNumber());
    }
    QCoreApplication::processEvents();
    return pictureOf(window, size);
}

const QList<Shot> &allShots()
{
    static const QList<Shot> shots{
        {.name = u"preferences"_s, .take = preferences},
        {.name = u"digital-twins"_s, .take = digitalTwins},
        {.name = u"persona"_s, .take = persona},
        {.name = u"import"_s, .take = importPack},
        {.name = u"questions"_s, .take = questions},
        {.name = u"question"_s, .take = optionQuestion},
        {.name = u"scale"_s, .take = scaleQuestion},
        {.name = u"label"_s, .take = label},
        {.name = u"marketplace"_s, .take = marketplace},
        {.name = u"discard"_s, .take = discard},
        {.name = u"quit"_s, .take = quit},
        {.name = u"about"_s, .take = about},
        {.name = u"results"_s, .take = results},
        {.name = u"log"_s, .take = log},
        {.name = u"boilerplate"_s, .take = boilerplate},
    };
    return shots;
}
