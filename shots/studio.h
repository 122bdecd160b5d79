#pragma once

#include "app/mainwindow.h"
#include "demo/examples.h"

#include <QObject>
#include <QSize>
#include <QTemporaryDir>

#include <functional>

class QImage;
class QPushButton;

/// A main window with the example survey in it, and how to take pictures of it. Identities and times, which are new
/// each time, are replaced, so that the pictures and the saved project don't tell when they were made.
class Studio
{
public:
    explicit Studio(const Examples &shown);
    ~Studio();
    Q_DISABLE_COPY_MOVE(Studio)

    MainWindow *window() { return &mainWindow; }

    /// Calls a slot of the window by its name.
    template<typename... Arguments>
    void call(const char *slot, const Arguments &...arguments)
    {
        if (!QMetaObject::invokeMethod(&mainWindow, slot, Qt::DirectConnection, arguments...))
            qFatal("the window has no slot %s with these arguments", slot);
    }

    /// Runs the survey by its button, at an endpoint on this machine, unless it has been run.
    void runSurvey();
    /// Saves the project as it is. False where a file is in the way or it can't be written.
    bool saveProject(const QString &path);
    /// A path for a file that goes with this object.
    QString path(const QString &name) const { return folder.filePath(name); }

    /// The row of the persona list with this name.
    int rowOf(const QString &persona);
    /// The page of this title, which is in front from here on.
    QWidget *openTab(const QString &title);
    /// A picture of the window with this page in front.
    QImage tabPicture(const QString &title, const QSize &size);
    /// A picture of the dialog that @p open opens, as large as it is asked to be or, of a fixed size, on as large a
    /// ground. @p prepare gets it before. It is closed as by its user then.
    static QImage dialogPicture(
        const std::function<void()> &open, const QSize &size,
        const std::function<void(QWidget *)> &prepare = [](QWidget *) {});

private:
    void enterExamples(const Examples &examples);
    void fixIdentities();
    void fixTimes();

    QTemporaryDir folder;
    MainWindow mainWindow;
    bool answered = false;
};

/// The button of this text in a window, which is to have one.
QPushButton *buttonOf(QWidget *window, const QString &text);
