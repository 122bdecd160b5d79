#include "shots/studio.h"

#include "preferences/settings.h"
#include "questions/labels.h"
#include "shots/picture.h"
#include "standin/chatendpoint.h"
#include "standin/detour.h"
#include "standin/respondent.h"

#include <QAction>
#include <QApplication>
#include <QEventLoop>
#include <QImage>
#include <QPushButton>
#include <QSqlQuery>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QUuid>

using namespace Qt::StringLiterals;

static QSqlDatabase project()
{
    return QSqlDatabase::database(u"project"_s, false);
}

Studio::Studio(const Examples &shown)
    : mainWindow(nullptr)
{
    Settings::store(u"your key"_s, {}, {});
    enterExamples(shown);
    fixIdentities();
    fixTimes();
    call("loadProject");
    mainWindow.show();
}

Studio::~Studio() = default;

void Studio::enterExamples(const Examples &examples)
{
    for (const ExamplePersona &persona : examples.panel)
        call("insertPersona", persona.name, persona.narrative, persona.tags.join(", "_L1));
    for (const ExampleQuestion &question : examples.questionnaire)
        call("insertQuestion", question.prompt, question.type, question.reasoning, encodeLabels(question.labels));
}

/// Personas are listed by identity, so that their order too is another each time.
void Studio::fixIdentities()
{
    QSqlQuery personas(u"SELECT uuid, name FROM personas ORDER BY name"_s, project());
    QList<std::pair<QString, QString>> found;
    while (personas.next())
        found << std::pair(personas.value(0).toString(), personas.value(1).toString());
    for (const auto &[uuid, name] : std::as_const(found)) {
        const QString fixed = QUuid::createUuidV5(QUuid(), name).toString(QUuid::WithoutBraces);
        for (const QString &statement : {u"UPDATE personas SET uuid=? WHERE uuid=?"_s,
                                         u"UPDATE persona_tags SET persona_uuid=? WHERE persona_uuid=?"_s}) {
            QSqlQuery query(project());
            query.prepare(statement);
            query.addBindValue(fixed);
            query.addBindValue(uuid);
            query.exec();
        }
    }
}

void Studio::fixTimes()
{
    QSqlQuery query(project());
    query.exec(u"UPDATE personas SET created_at='2026-11-02T18:30:00.000', modified_at='2026-11-02 18:30:00'"_s);
    query.exec(u"UPDATE questions SET created_at='2026-11-02 19:00:00', modified_at='2026-11-02 19:00:00'"_s);
    query.exec(u"UPDATE responses SET created_at=datetime('2026-11-02 20:00:00', '+' || id || ' seconds')"_s);
}

void Studio::runSurvey()
{
    if (std::exchange(answered, true))
        return;
    standin::ChatEndpoint endpoint;
    endpoint.answerWith(&standin::respond);
    const standin::Detour detour(endpoint);
    auto *button = mainWindow.findChild<QPushButton *>(u"runSurveyButton"_s);
    const auto actions = mainWindow.findChildren<QAction *>();
    QEventLoop loop;
    for (const QAction *action : actions) {
        if (action->text() == "Run"_L1)
            QObject::connect(action, &QAction::enabledChanged, &loop, &QEventLoop::quit);
    }
    QTimer::singleShot(0, button, &QPushButton::click);
    do {
        loop.exec();
    } while (!button->isEnabled());
    fixTimes();
    call("loadResults");
}

bool Studio::saveProject(const QString &path)
{
    bool saved = false;
    return QMetaObject::invokeMethod(&mainWindow, "saveProjectToFile", Qt::DirectConnection, qReturnArg(saved), path) &&
           saved;
}

int Studio::rowOf(const QString &persona)
{
    const auto *table = mainWindow.findChild<QTableWidget *>(u"personaTable"_s);
    const auto items = table->findItems(persona, Qt::MatchExactly);
    return items.isEmpty() ? 0 : items.constFirst()->row();
}

QWidget *Studio::openTab(const QString &title)
{
    auto *tabs = mainWindow.findChild<QTabWidget *>();
    for (int index = 0; index < tabs->count(); ++index) {
        if (tabs->tabText(index) == title)
            tabs->setCurrentIndex(index);
    }
    return tabs->currentWidget();
}

QImage Studio::tabPicture(const QString &title, const QSize &size)
{
    openTab(title);
    mainWindow.resize(size);
    QCoreApplication::processEvents();
    return pictureOf(&mainWindow, size);
}

QImage Studio::dialogPicture(const std::function<void()> &open, const QSize &size,
                             const std::function<void(QWidget *)> &prepare)
{
    QImage picture;
    QTimer timer;
    const QWidget *before = QApplication::activeModalWidget();
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        QWidget *dialog = QApplication::activeModalWidget();
        if (dialog == before || dialog == nullptr)
            return;
        timer.stop();
        dialog->resize(size);
        prepare(dialog);
        QCoreApplication::processEvents();
        picture = pictureOf(dialog, size);
        dialog->close();
    });
    timer.start(0);
    open();
    return picture;
}

QPushButton *buttonOf(QWidget *window, const QString &text)
{
    const auto buttons = window->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->text().remove(u'&') == text)
            return button;
    }
    qFatal("the window has no button %s", qUtf8Printable(text));
}
