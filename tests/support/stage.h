#pragma once

#include "app/mainwindow.h"

#include <QPushButton>
#include <QSqlDatabase>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QVariant>

#include <memory>

/// What a test function plays on: a home folder, settings and a main window of its own. The window is driven as outside
/// code would drive it: slots by name, menu entries and buttons by text, widgets by object name, the database through
/// the connection "project".
class Stage
{
public:
    /// Test mode is off, whatever the environment said.
    Stage();
    ~Stage();
    Q_DISABLE_COPY_MOVE(Stage)

    /// The window, made at the first call.
    MainWindow *window();
    /// Destroys the window and its database.
    void closeWindow();

    static void setTestMode(bool on);
    /// Stores a setting as the preferences would, for example ("openai/api_key", "key").
    static void setSetting(const QString &key, const QString &value);
    /// A path in the private folder.
    QString path(const QString &name) const { return folder.filePath(name); }

    /// Calls a slot of the window, public or private, by its name.
    template<typename... Arguments>
    bool call(const char *slot, const Arguments &...arguments)
    {
        return QMetaObject::invokeMethod(window(), slot, Qt::DirectConnection, arguments...);
    }
    /// Calls a slot that returns bool and gives what it returned.
    template<typename... Arguments>
    bool result(const char *slot, const Arguments &...arguments)
    {
        bool returned = false;
        const bool called =
            QMetaObject::invokeMethod(window(), slot, Qt::DirectConnection, qReturnArg(returned), arguments...);
        Q_ASSERT(called);
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

    QSqlDatabase project();
    /// Runs a statement on the project; false if it fails.
    bool exec(const QString &statement, const QVariantList &values = {});
    /// All rows of a query on the project.
    QList<QVariantList> rows(const QString &statement, const QVariantList &values = {});
    /// The first value of the first row of a query on the project, invalid where there is none.
    QVariant value(const QString &query, const QVariantList &values = {});

    /// The texts of a table's cells, row by row; a cell without an item reads as null.
    static QList<QStringList> cells(const QTableWidget *table);
    /// The unsaved-changes flag as a user meets it: true if closing the window asks, which is answered with No.
    bool asksBeforeClosing();

private:
    QTemporaryDir folder;
    std::unique_ptr<MainWindow> mainWindow;
};
