#include "survey/surveyrunner.h"

#include "app/mainwindow.h"
#include "app/testmode.h"
#include "inspect/chatlogwindow.h"
#include "preferences/settings.h"
#include "project/boilerplate.h"
#include "survey/answeredpairs.h"
#include "survey/answers.h"
#include "survey/chatrequester.h"
#include "survey/history.h"
#include "survey/requestassembly.h"

#include <QDebug>
#include <QJsonDocument>
#include <QSqlError>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

SurveyRunner::SurveyRunner(MainWindow *mainWindow, const QSqlDatabase &database, ChatLogWindow *logWindow,
                           QObject *parent)
    : QObject(parent)
    , window(mainWindow)
    , db(database)
    , log(logWindow)
{
    if (log)
        connect(log, &QObject::destroyed, this, [] { qInfo("ChatLogWindow destroyed; logging disabled"); });
}

void SurveyRunner::start()
{
    if (!db.isOpen()) {
        Q_EMIT finished();
        return;
    }
    personas = readPersonas(db);
    questions = readQuestions(db);
    const Boilerplate texts = readBoilerplate(db).value_or(Boilerplate());
    preamble = texts.preamble;
    postamble = texts.postamble;
    if (log)
        log->show();
    personaIndex = 0;
    questionIndex = 0;
    askNext();
}

/// In test mode and without a key an answer or failure comes from within the asking, and asks for the next pair from
/// there. The outermost call then takes that step, so that a run of any length needs no deeper stack.
void SurveyRunner::askNext()
{
    stepWanted = true;
    if (walking)
        return;
    walking = true;
    while (stepWanted) {
        stepWanted = false;
        if (!findOpenPair()) {
            // Whoever hears of it may let this object go.
            walking = false;
            Q_EMIT finished();
            return;
        }
        ask();
    }
    walking = false;
}

/// Moves on to the first pair without an answer, persona by persona. The table is read anew at each step, since
/// answers may have come or gone meanwhile; where it can't be read, the persona is passed over.
bool SurveyRunner::findOpenPair()
{
    AnsweredPairs pairs(db);
    for (; personaIndex < personas.size(); ++personaIndex, questionIndex = 0) {
        const auto answered = pairs.of(personas.at(personaIndex).uuid);
        if (!answered)
            continue;
        for (; questionIndex < questions.size(); ++questionIndex) {
            if (!answered->contains(questions.at(questionIndex).id))
                return true;
        }
    }
    return false;
}

void SurveyRunner::ask()
{
    const PersonaEntry &persona = personas.at(personaIndex);
    const QuestionEntry &question = questions.at(questionIndex);
    const QJsonArray messages =
        chatMessages(systemText(preamble, persona, postamble), readHistory(db, persona.uuid), question.prompt);
    appendToLog("-> "_L1, QString::fromUtf8(QJsonDocument(messages).toJson(QJsonDocument::Compact)));

    if (testMode()) {
        handleAnswer(u"test response"_s);
        return;
    }
    makeRequester();
    const QString model = question.judge ? Settings::adjudicatorModel() : Settings::personaModel();
    const AnswerFormat format = answerFormat(question);
    requester->send(messages, model, format.tools, format.toolChoice, format.responseFormat, -1.0);
}

void SurveyRunner::makeRequester()
{
    requester = new ChatRequester(this);
    connect(requester, &ChatRequester::responseReceived, this, &SurveyRunner::handleAnswer);
    connect(requester, &ChatRequester::requestFailed, this, &SurveyRunner::handleError);
    // Fires after the next requester has been stored and clears that one; nothing reads the field after send().
    connect(requester, &QObject::destroyed, this, [this] { requester.clear(); });
    if (!log)
        return;
    connect(requester, &ChatRequester::requestSent, log,
            [this](const QString &payload) { appendToLog("-> "_L1, payload); });
    connect(requester, &ChatRequester::rawResponse, log,
            [this](const QString &payload) { appendToLog("<- "_L1, payload); });
}

void SurveyRunner::handleAnswer(const QString &text)
{
    requester.clear();
    const PersonaEntry &persona = personas.at(personaIndex);
    const QuestionEntry &question = questions.at(questionIndex);
    appendToLog("<- "_L1, text);
    storeAnswer(persona.uuid, question.id, interpretAnswer(text, question.answerType));
    if (window != nullptr) {
        window->loadResults();
        window->markDirty();
    }
    ++questionIndex;
    askNext();
}

void SurveyRunner::handleError(const QString &err)
{
    requester.clear();
    appendToLog("! "_L1, err);
    qWarning().noquote() << "survey error:" << err;
    ++questionIndex;
    askNext();
}

void SurveyRunner::storeAnswer(const QString &personaUuid, int questionId, const ParsedAnswer &answer)
{
    QSqlQuery query(db);
    query.prepare(u"INSERT INTO responses "
                  "(persona_uuid, question_id, text_answer, numeric_answer, json_answer, created_at) "
                  "VALUES (?,?,?,?,?,CURRENT_TIMESTAMP)"_s);
    query.addBindValue(personaUuid);
    query.addBindValue(questionId);
    query.addBindValue(answer.textAnswer);
    query.addBindValue(answer.numericAnswer);
    query.addBindValue(answer.jsonAnswer);
    if (!query.exec())
        qWarning().noquote() << "insert failed" << query.lastError().text();
}

void SurveyRunner::appendToLog(QLatin1StringView mark, const QString &text)
{
    if (log)
        log->appendLine(mark + text);
}
