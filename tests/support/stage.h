#pragma once

#include "app/mainwindow.h"
#include "tests/support/sql.h"

#include <QPushButton>
#include <QSignalBlocker>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// What a test function plays on: a home folder, settings and a main window of its own. The window is driven as outside
/// code would drive it: slots by name, menu entries and buttons by text, widgets by object name, the database through
/// the connection "project".
class Stage : public Sql
{
public:
    /// Test mode is off, whatever the environment said.
    Stage();
    ~Stage() override;

    /// The window, made at the first call.
    MainWindow *window();
    /// Destroys the window and its database.
    void closeWindow();

    static void setTestMode(bool on);
    /// Stores a setting as the preferences would, for example ("openai/api_key", "key").
    static void setSetting(const QString &key, const QString &value);
    /// A path in the private folder.
    QString path(const QString &name) const { return folder.filePath(name); }

    /// Calls a slot of the window, public or private, by its name. Where there is none for these arguments the test
    /// fails.
    template<typename... Arguments>
    bool call(const char *slot, const Arguments &...arguments)
    {
        const bool called = QMetaObject::invokeMethod(window(), slot, Qt::DirectConnection, arguments...);
        if (!called)
            QTest::qFail(slot, __FILE__, __LINE__);
        return called;
    }
    /// Calls a slot that returns bool and gives what it returned.
    template<typename... Arguments>
    bool result(const char *slot, const Arguments &...arguments)
    {
        bool returned = false;
        if (!QMetaObject::invokeMethod(window(), slot, Qt::DirectConnection, qReturnArg(returned), arguments...))
            QTest::qFail(slot, __FILE__, __LINE__);
        return returned;
    }

    /// A widget of the window by its object name.
    template<typename Widget>
    Widget *find(const QString &name)
    {
        return window()->findChild<Widget *>(name);
    }
    /// A menu entry by its text.
    QAction *action(const QString &text);
    /// A button of the window by its text; where two pages have one, the page is named by its tab title.
    QPushButton *button(const QString &text, const QString &tab = {});
    /// A page by the title of its tab.
    QWidget *page(const QString &tab);

    /// The connection "project".
    QSqlDatabase database() override;

    /// The unsaved-changes flag as a user meets it: true if closing the window asks, which is answered with No.
    bool asksBeforeClosing();

private:
    QTemporaryDir folder;
    std::unique_ptr<MainWindow> mainWindow;
};
