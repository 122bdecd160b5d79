#include "tests/support/stage.h"

#include "standin/privatehome.h"
#include "tests/support/modal.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QSettings>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

Stage::Stage()
{
    leaveUsersHome(folder.path());
    QCoreApplication::setOrganizationName(u"Orrinet"_s);
    QCoreApplication::setApplicationName(u"Orrinet"_s);
    // Warnings that a test does not expect fail it, but for those of the platform plugin that knows no real display.
    QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s));
}

Stage::~Stage()
{
    closeWindow();
    setTestMode(false);
}

MainWindow *Stage::window()
{
    if (!mainWindow)
        mainWindow = std::make_unique<MainWindow>(nullptr);
    return mainWindow.get();
}

void Stage::closeWindow()
{
    mainWindow.reset();
    // Deferred deletions may hold queries or copies of the handle.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    if (QSqlDatabase::contains(u"project"_s))
        QSqlDatabase::removeDatabase(u"project"_s);
}

void Stage::setTestMode(bool on)
{
    if (on)
        qputenv("ORRINET_TEST_MODE", "1");
    else
        qunsetenv("ORRINET_TEST_MODE");
}

void Stage::setSetting(const QString &key, const QString &value)
{
    QSettings().setValue(key, value);
}

QAction *Stage::action(const QString &text)
{
    const auto menus = window()->menuBar()->findChildren<QMenu *>();
    for (const QMenu *menu : menus) {
        const auto actions = menu->actions();
        for (QAction *action : actions) {
            if (action->text() == text)
                return action;
        }
    }
    return nullptr;
}

QWidget *Stage::page(const QString &tab)
{
    const auto *tabs = window()->findChild<QTabWidget *>();
    for (int index = 0; index < tabs->count(); ++index) {
        if (tabs->tabText(index) == tab)
            return tabs->widget(index);
    }
    return nullptr;
}

QPushButton *Stage::button(const QString &text, const QString &tab)
{
    const QWidget *where = tab.isEmpty() ? window() : page(tab);
    const auto buttons = where->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->text() == text)
            return button;
    }
    return nullptr;
}

QSqlDatabase Stage::database()
{
    window();
    return QSqlDatabase::database(u"project"_s, false);
}

bool Stage::asksBeforeClosing()
{
    const Modal modal([](QWidget *box) { answerBox(box, QMessageBox::No); });
    QCloseEvent event;
    QCoreApplication::sendEvent(window(), &event);
    return modal.wasAnswered();
}
