// A plugin by which a test looks into the real program and closes it as a user would. The program knows nothing of it:
// Qt loads it where the environment names it.

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QGenericPlugin>
#include <QIcon>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSocketNotifier>
#include <QSqlDatabase>
#include <QTableWidget>
#include <QTimer>

#include <unistd.h>

using namespace Qt::StringLiterals;

/// Reports once the program's event loop runs, then obeys the lines of the standard input.
class Remote : public QObject
{
    Q_OBJECT

public:
    Remote()
        : input(STDIN_FILENO, QSocketNotifier::Read)
    {
        // The plugin is made inside the constructor of the application object.
        resourcesThere = QFile::exists(u":/VERSION.txt"_s);
        connect(&input, &QSocketNotifier::activated, this, &Remote::obey);
        QTimer::singleShot(0, this, &Remote::reportStart);
    }

private:
    void reportStart()
    {
        for (const auto all = QApplication::topLevelWidgets(); QWidget * widget : all) {
            if (auto *candidate = qobject_cast<QMainWindow *>(widget))
                window = candidate;
        }
        report({{u"resourcesThere"_s, resourcesThere},
                {u"organization"_s, QCoreApplication::organizationName()},
                {u"application"_s, QCoreApplication::applicationName()},
                {u"version"_s, QCoreApplication::applicationVersion()},
                {u"iconIsNull"_s, QApplication::windowIcon().isNull()},
                {u"iconPathExists"_s, QFile::exists(u":/icons/orrinet.svg"_s)},
                {u"iconFileExists"_s, QFile::exists(u":/icons/resources/icons/svg/orrinet.svg"_s)},
                {u"topLevelWindows"_s, QGuiApplication::topLevelWindows().size()},
                {u"windowIsVisible"_s, window != nullptr && window->isVisible()},
                {u"windowHasParent"_s, window != nullptr && window->parent() != nullptr},
                {u"windowTitle"_s, window != nullptr ? window->windowTitle() : QString()},
                {u"windowClass"_s, QLatin1StringView(window != nullptr ? window->metaObject()->className() : "")},
                {u"projectIsOpen"_s, QSqlDatabase::database(u"project"_s, false).isOpen()},
                {u"personaRows"_s,
                 window != nullptr ? window->findChild<QTableWidget *>(u"personaTable"_s)->rowCount() : -1}});
        connect(window, &QObject::destroyed, this, [] {
            report({{u"destroyed"_s, u"window"_s}, {u"applicationStands"_s, QCoreApplication::instance() != nullptr}});
        });
    }

    void obey()
    {
        char buffer[64];
        const auto length = ::read(STDIN_FILENO, buffer, sizeof buffer);
        const QByteArray order = QByteArray(buffer, length > 0 ? length : 0).trimmed();
        input.setEnabled(false);
        if (order == "close")
            window->close();
        else if (order == "quit")
            trigger(u"Quit"_s);
        else
            QCoreApplication::exit(order.toInt());
    }

    void trigger(const QString &text)
    {
        for (const auto all = window->menuBar()->findChildren<QMenu *>(); const QMenu *menu : all) {
            for (const auto entries = menu->actions(); QAction * action : entries) {
                if (action->text() == text)
                    action->trigger();
            }
        }
    }

    static void report(const QJsonObject &object)
    {
        QFile output;
        if (output.open(STDOUT_FILENO, QIODevice::WriteOnly))
            output.write(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
    }

    QSocketNotifier input;
    QMainWindow *window = nullptr;
    bool resourcesThere = false;
};

class RemotePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "remote.json")

public:
    QObject *create(const QString & /*name*/, const QString & /*arguments*/) override { return new Remote; }
};

#include "remote.moc"
